#ifndef ZEL_DB_MATCH_H
#define ZEL_DB_MATCH_H

#include <zel/zelExport.h>

/// The kinds of node in a match rule.
enum OpCode : int {
    CondEQ = 0,
    CondNE = 1,
    CondLE = 2,
    CondGE = 3,
    CondLT = 4,
    CondGT = 5,
    CondAND = 6,
    CondOR = 7,
    CondStrEQ = 8,
    ImmedINT = 9,
    ImmedSTR = 10,
    FuncSTR = 11,
    FuncUCHAR = 12,
    FuncCHAR = 13,
    FuncUSHORT = 14,
    FuncSHORT = 15,
    FuncUINT = 16,
    FuncINT = 17,
};

/// The value of a node: `s` for ImmedSTR and FuncSTR, `i` for all others.
union zelDbValue {
    char* s;
    int i;
};

/// A node of a match rule, which recognises a format by a file's first bytes. A rule is a tree of
/// nodes that is built bottom-up and not changed afterwards. Nodes own nothing and are not freed by
/// the library. Multi-byte reads are big-endian; comparisons are signed and 32 bits wide.
class ZEL_API zelDbMatch {
public:
    /// A comparison or logic node. `left` must not be null.
    zelDbMatch(OpCode op, zelDbMatch* left, zelDbMatch* right);
    /// A string constant. Keeps the pointer.
    zelDbMatch(OpCode op, char* val);
    /// An integer constant, or a read at offset `val1` (of `val2` bytes for FuncSTR).
    zelDbMatch(OpCode op, int val1, int val2);

    /// The value of the tree on the first bytes of a file, of which `data` holds at least `need`.
    /// Any number of threads can evaluate a tree at the same time.
    zelDbValue eval(void* data) const;

    OpCode op;
    /// The integer constant, or the byte offset of a read.
    int ival1 = 0;
    /// The length of a string constant or of a string read.
    int ival2 = 0;
    char* sval = nullptr;
    /// The bytes from the start of the file that the tree needs. Negative if a read in it has a
    /// negative offset or length, or ends beyond the int range: such a tree never matches.
    int need = 0;
    zelDbMatch* left = nullptr;
    zelDbMatch* right = nullptr;
};

#endif
