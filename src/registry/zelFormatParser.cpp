// The parser of the format database. Entries, statements and suffixes only repeat and are read by
// plain loops. Conditions nest, and are read by shifting symbols on a stack and reducing them.

#include "registry/lasting.h"
#include "registry/zelFormatLex.h"

#include <zel/zelDbMatch.h>
#include <zel/zelFormatDB.h>

#include <algorithm>
#include <vector>

using namespace zel::registry;

zelFormatDB* fmt = nullptr;

namespace {

// Results of zelFormatDB::parse.
constexpr int accepted = 0;
constexpr int syntaxError = 1;
constexpr int stackOverflow = 2;

// The stack is that of a left-to-right parser with one token of lookahead: an entry for its first
// state and one for each symbol that was read and is not part of a larger symbol yet. When a
// condition begins, these are the first state, the database so far, the head of the entry, its
// statements so far and the word `match`. Within the condition, an open parenthesis, a condition or
// term that waits for its other operand, an operator and each token of a term that is not complete
// yet take an entry each. So n parentheses around `1 == 1` take n + 8 entries at the most, when the
// second number is read.
constexpr std::size_t stackLimit = 10000;
constexpr std::size_t firstStackRoom = 200;
constexpr std::size_t entriesBelowCondition = 5;

struct Symbol {
    // A token, or one of the symbols below.
    int kind;
    zelDbMatch* node;
};

enum Nonterminal : int {
    symbolCondition = -1,
    symbolTerm = -2,
};

enum class TermType {
    integer,
    string,
};

struct TermStart {
    Token token;
    OpCode op;
    TermType type;
};

constexpr TermStart termStarts[] = {
    {tokenNumber, ImmedINT, TermType::integer}, {tokenUChar, FuncUCHAR, TermType::integer},
    {tokenChar, FuncCHAR, TermType::integer},   {tokenUShort, FuncUSHORT, TermType::integer},
    {tokenShort, FuncSHORT, TermType::integer}, {tokenUInt, FuncUINT, TermType::integer},
    {tokenInt, FuncINT, TermType::integer},     {tokenText, ImmedSTR, TermType::string},
    {tokenString, FuncSTR, TermType::string},
};

struct Operator {
    int token;
    OpCode op;
};

constexpr Operator comparisons[] = {
    {tokenEqual, CondEQ},        {tokenNotEqual, CondNE}, {tokenLessEqual, CondLE},
    {tokenGreaterEqual, CondGE}, {'<', CondLT},           {'>', CondGT},
};

template <class Table>
const auto* findToken(const Table& table, int token) {
    const auto* found = std::find_if(std::begin(table), std::end(table),
                                     [=](const auto& row) { return row.token == token; });
    return found == std::end(table) ? nullptr : found;
}

class Parser {
public:
    int parse();

private:
    // Members that give a bool answer false when the parse has ended, with the result in `result`.

    int token();
    Value take();
    bool expect(int wanted, Value& value);
    bool fail(int failure, const char* message);
    bool failSyntax() { return fail(syntaxError, "parse error"); }

    bool parseEntryHead();
    bool parseStatement();
    bool parseTextStatement(int operand, void (zelFormatDB::*set)(char*));
    bool parseSubsystem();
    bool parseSuffixes();
    bool parseAccess();
    bool parseMatch();

    bool shift(int wanted, Value& value);
    bool shift(int wanted) {
        Value unused;
        return shift(wanted, unused);
    }
    void reduce(std::size_t symbols, int kind, zelDbMatch* node);
    bool parseOperand();
    bool parseComparison();
    bool parseTerm(const TermStart& start);
    bool parseRead(const TermStart& start);
    bool parseStringRead();
    bool parseClosing();
    void reduceLogic(bool orToo);

    bool haveToken = false;
    int currentToken = tokenEnd;
    Value currentValue{};
    int result = accepted;
    std::vector<Symbol> stack;
    int openParentheses = 0;
};

// The lookahead. It is scanned only when something depends on it, so that an entry exists before
// anything behind its name is scanned.
int Parser::token() {
    if (!haveToken) {
        currentToken = zellex();
        currentValue = zellval;
        haveToken = true;
    }
    return currentToken;
}

Value Parser::take() {
    haveToken = false;
    return currentValue;
}

bool Parser::expect(int wanted, Value& value) {
    if (token() != wanted) {
        return failSyntax();
    }
    value = take();
    return true;
}

bool Parser::fail(int failure, const char* message) {
    zelFormatDB::error(message);
    result = failure;
    return false;
}

int Parser::parse() {
    stack.reserve(firstStackRoom);
    bool goesOn = true;
    while (goesOn && token() == tokenFormat) {
        goesOn = parseEntryHead();
        while (goesOn && token() >= tokenDescription && token() <= tokenMatch) {
            goesOn = parseStatement();
        }
    }
    if (goesOn && token() > tokenEnd) {
        failSyntax();
    }
    return result;
}

bool Parser::parseEntryHead() {
    take();
    Value name;
    if (!expect(tokenIdent, name)) {
        return false;
    }
    fmt = makeLasting<zelFormatDB>(name.sval);
    return true;
}

bool Parser::parseStatement() {
    const int keyword = token();
    take();
    switch (keyword) {
    case tokenDescription:
        return parseTextStatement(tokenText, &zelFormatDB::setDescription);
    case tokenDso:
        return parseTextStatement(tokenIdent, &zelFormatDB::setDso);
    case tokenDll:
        return parseTextStatement(tokenIdent, &zelFormatDB::setDll);
    case tokenSubsystem:
        return parseSubsystem();
    case tokenSuffixes:
        return parseSuffixes();
    case tokenAccess:
        return parseAccess();
    default:
        return parseMatch();
    }
}

bool Parser::parseTextStatement(int operand, void (zelFormatDB::*set)(char*)) {
    Value value;
    if (!expect(operand, value)) {
        return false;
    }
    (fmt->*set)(value.sval);
    return true;
}

bool Parser::parseSubsystem() {
    const int operand = token() == tokenText ? tokenText : tokenIdent;
    return parseTextStatement(operand, &zelFormatDB::setSubSystem);
}

bool Parser::parseSuffixes() {
    Value suffix;
    if (!expect(tokenIdent, suffix)) {
        return false;
    }
    auto* list = makeLasting<zelList<zelSuffixItem>>();
    list->append(makeLasting<zelSuffixItem>(suffix.sval));
    while (token() == ',') {
        take();
        if (!expect(token() == tokenText ? tokenText : tokenIdent, suffix)) {
            return false;
        }
        list->append(makeLasting<zelSuffixItem>(suffix.sval));
    }
    fmt->setSuffixes(list);
    return true;
}

bool Parser::parseAccess() {
    const int mode = token();
    if (mode != tokenReadWrite && mode != tokenReadOnly && mode != tokenWriteOnly) {
        return failSyntax();
    }
    take();
    fmt->setAccess(mode);
    return true;
}

bool Parser::parseMatch() {
    stack.clear();
    openParentheses = 0;
    for (;;) {
        if (!parseOperand()) {
            return false;
        }
        if (token() == tokenAnd || token() == tokenOr) {
            reduceLogic(token() == tokenOr);
            if (!shift(token())) {
                return false;
            }
        } else if (openParentheses > 0) {
            return failSyntax();
        } else {
            reduceLogic(true);
            fmt->setMatch(stack.back().node);
            return true;
        }
    }
}

bool Parser::shift(int wanted, Value& value) {
    if (!expect(wanted, value)) {
        return false;
    }
    if (entriesBelowCondition + stack.size() >= stackLimit) {
        return fail(stackOverflow, "parser stack overflow");
    }
    stack.push_back({wanted, nullptr});
    return true;
}

// Replaces the topmost symbols by the one that they form.
void Parser::reduce(std::size_t symbols, int kind, zelDbMatch* node) {
    stack.resize(stack.size() - symbols);
    stack.push_back({kind, node});
}

// An operand of a logic operator: a comparison, with the parentheses in front of it and those
// behind it that close.
bool Parser::parseOperand() {
    while (token() == '(') {
        if (!shift('(')) {
            return false;
        }
        ++openParentheses;
    }
    if (!parseComparison()) {
        return false;
    }
    while (token() == ')' && openParentheses > 0) {
        if (!parseClosing()) {
            return false;
        }
    }
    return true;
}

bool Parser::parseClosing() {
    reduceLogic(true);
    zelDbMatch* inner = stack.back().node;
    if (!shift(')')) {
        return false;
    }
    reduce(3, symbolCondition, inner);
    --openParentheses;
    return true;
}

// Makes nodes of the waiting AND operators, and of the OR operators too if they are asked for, down
// to the last parenthesis that is open.
void Parser::reduceLogic(bool orToo) {
    while (stack.size() >= 3) {
        const Symbol& left = *(stack.end() - 3);
        const int op = (stack.end() - 2)->kind;
        if (op != tokenAnd && !(orToo && op == tokenOr)) {
            return;
        }
        auto* node = makeLasting<zelDbMatch>(op == tokenAnd ? CondAND : CondOR, left.node,
                                             stack.back().node);
        reduce(3, symbolCondition, node);
    }
}

bool Parser::parseComparison() {
    const TermStart* left = findToken(termStarts, token());
    if (left == nullptr) {
        return failSyntax();
    }
    if (!parseTerm(*left)) {
        return false;
    }
    const Operator* comparison = findToken(comparisons, token());
    const bool isString = left->type == TermType::string;
    if (comparison == nullptr || (isString && comparison->op != CondEQ)) {
        return failSyntax();
    }
    if (!shift(comparison->token)) {
        return false;
    }
    const TermStart* right = findToken(termStarts, token());
    if (right == nullptr || right->type != left->type) {
        return failSyntax();
    }
    if (!parseTerm(*right)) {
        return false;
    }
    auto* node = makeLasting<zelDbMatch>(isString ? CondStrEQ : comparison->op,
                                         (stack.end() - 3)->node, stack.back().node);
    reduce(3, symbolCondition, node);
    return true;
}

bool Parser::parseTerm(const TermStart& start) {
    Value value;
    if (!shift(start.token, value)) {
        return false;
    }
    switch (start.op) {
    case ImmedINT:
        reduce(1, symbolTerm, makeLasting<zelDbMatch>(ImmedINT, value.ival, 0));
        return true;
    case ImmedSTR:
        reduce(1, symbolTerm, makeLasting<zelDbMatch>(ImmedSTR, value.sval));
        return true;
    case FuncSTR:
        return parseStringRead();
    default:
        return parseRead(start);
    }
}

bool Parser::parseRead(const TermStart& start) {
    Value offset;
    if (!shift('(') || !shift(tokenNumber, offset) || !shift(')')) {
        return false;
    }
    reduce(4, symbolTerm, makeLasting<zelDbMatch>(start.op, offset.ival, 0));
    return true;
}

bool Parser::parseStringRead() {
    Value offset;
    Value length;
    if (!shift('(') || !shift(tokenNumber, offset) || !shift(',') || !shift(tokenNumber, length) ||
        !shift(')')) {
        return false;
    }
    reduce(6, symbolTerm, makeLasting<zelDbMatch>(FuncSTR, offset.ival, length.ival));
    return true;
}

} // namespace

int zelFormatDB::parse() {
    return Parser().parse();
}
