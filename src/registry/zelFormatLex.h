#ifndef ZEL_REGISTRY_FORMAT_LEX_H
#define ZEL_REGISTRY_FORMAT_LEX_H

#include <zel/zelList.h>

class zelDbMatch;
class zelFormatDB;

namespace zel::registry {

/// The codes of the tokens that are more than a single character. A single character is its own
/// code, as a signed char; 0 and below stand for the end of the input.
enum Token : int {
    tokenEnd = 0,
    tokenFormat = 256,
    tokenDescription,
    tokenDso,
    tokenDll,
    tokenSubsystem,
    tokenSuffixes,
    tokenAccess,
    tokenMatch,
    tokenReadWrite,
    tokenReadOnly,
    tokenWriteOnly,
    tokenUChar,
    tokenChar,
    tokenUShort,
    tokenShort,
    tokenUInt,
    tokenInt,
    tokenString,
    tokenAnd,
    tokenOr,
    tokenEqual,
    tokenNotEqual,
    tokenGreaterEqual,
    tokenLessEqual,
    tokenIdent,
    tokenNumber,
    tokenText,
};

/// What a token or a symbol of the grammar is worth.
union Value {
    int ival;
    char* sval;
    zelDbMatch* match;
    zelList<zelSuffixItem>* list;
};

} // namespace zel::registry

/// Scans the next token of the database and returns its code, 0 at the end of the input.
int zellex();
/// The value of the last token: `ival` of a number, `sval` of an identifier or a string.
extern zel::registry::Value zellval;
/// The zero-ended text of the last token, valid until the next one is scanned.
extern char* zeltext;
/// The entry that the statements apply to.
extern zelFormatDB* fmt;

#endif
