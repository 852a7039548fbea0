#include <zel/zelDbMatch.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

constexpr int neverMatches = -1;

int widthOfRead(OpCode op, int length) {
    switch (op) {
    case FuncSTR:
        return length;
    case FuncUCHAR:
    case FuncCHAR:
        return 1;
    case FuncUSHORT:
    case FuncSHORT:
        return 2;
    default:
        return 4;
    }
}

int needOfRead(OpCode op, int offset, int length) {
    const int width = widthOfRead(op, length);
    const std::int64_t end = static_cast<std::int64_t>(offset) + width;
    return offset < 0 || width < 0 || end > INT_MAX ? neverMatches : static_cast<int>(end);
}

int needOfBoth(int a, int b) {
    return a < 0 || b < 0 ? neverMatches : std::max(a, b);
}

std::uint32_t readBigEndian(const unsigned char* from, int width) {
    std::uint32_t value = 0;
    for (int i = 0; i < width; ++i) {
        value = value << 8 | from[i];
    }
    return value;
}

bool compare(OpCode op, int a, int b) {
    switch (op) {
    case CondEQ:
        return a == b;
    case CondNE:
        return a != b;
    case CondLE:
        return a <= b;
    case CondGE:
        return a >= b;
    case CondLT:
        return a < b;
    default:
        return a > b;
    }
}

bool isLogic(const zelDbMatch* node) {
    return node != nullptr && (node->op == CondAND || node->op == CondOR);
}

zelDbValue integer(int i) {
    zelDbValue value{};
    value.i = i;
    return value;
}

zelDbValue text(char* s) {
    zelDbValue value;
    value.s = s;
    return value;
}

int evalRead(OpCode op, const unsigned char* at) {
    switch (op) {
    case FuncUCHAR:
        return *at;
    case FuncCHAR:
        return static_cast<std::int8_t>(*at);
    case FuncUSHORT:
        return static_cast<int>(readBigEndian(at, 2));
    case FuncSHORT:
        return static_cast<std::int16_t>(readBigEndian(at, 2));
    default:
        return static_cast<int>(readBigEndian(at, 4));
    }
}

zelDbValue evalTerm(const zelDbMatch& node, char* data) {
    switch (node.op) {
    case ImmedINT:
        return integer(node.ival1);
    case ImmedSTR:
        return text(node.sval);
    case FuncSTR:
        return text(data + node.ival1);
    default:
        return integer(evalRead(node.op, reinterpret_cast<unsigned char*>(data) + node.ival1));
    }
}

bool evalStringComparison(const zelDbMatch& node, void* data) {
    const char* a = node.left->eval(data).s;
    const char* b = node.right->eval(data).s;
    const int length = node.left->ival2;
    return a != nullptr && b != nullptr && node.right->ival2 == length &&
           std::strncmp(a, b, static_cast<std::size_t>(length)) == 0;
}

// The value of a node that is neither AND nor OR. The operands of a comparison are terms, so that
// eval() comes back here at once and does not go deeper.
zelDbValue evalSimple(const zelDbMatch* node, void* data) {
    if (node == nullptr) {
        return integer(0);
    }
    if (node->op > CondStrEQ) {
        return evalTerm(*node, static_cast<char*>(data));
    }
    if (node->op == CondStrEQ) {
        return integer(evalStringComparison(*node, data) ? 1 : 0);
    }
    const int a = node->left->eval(data).i;
    const int b = node->right->eval(data).i;
    return integer(compare(node->op, a, b) ? 1 : 0);
}

// The AND and OR nodes whose right operand may still be wanted. Rules that people write fit the
// fixed part; only one with a chain longer than that allocates.
class PendingNodes {
public:
    bool isEmpty() const { return count == 0; }
    const zelDbMatch* top() const { return count > near.size() ? beyond.back() : near[count - 1]; }
    void push(const zelDbMatch* node) {
        if (count < near.size()) {
            near[count] = node;
        } else {
            beyond.push_back(node);
        }
        ++count;
    }
    void pop() {
        if (count > near.size()) {
            beyond.pop_back();
        }
        --count;
    }

private:
    std::array<const zelDbMatch*, 64> near;
    std::vector<const zelDbMatch*> beyond;
    std::size_t count = 0;
};

} // namespace

zelDbMatch::zelDbMatch(OpCode kind, zelDbMatch* first, zelDbMatch* second)
    : op(kind), need(needOfBoth(first->need, second == nullptr ? 0 : second->need)), left(first),
      right(second) {}

zelDbMatch::zelDbMatch(OpCode kind, char* val)
    : op(kind), ival2(static_cast<int>(std::min<std::size_t>(std::strlen(val), INT_MAX))),
      sval(val) {}

zelDbMatch::zelDbMatch(OpCode kind, int val1, int val2) : op(kind), ival1(val1), ival2(val2) {
    if (kind >= FuncSTR) {
        need = needOfRead(kind, val1, val2);
    }
}

zelDbValue zelDbMatch::eval(void* data) const {
    if (need < 0) {
        return integer(0);
    }
    if (!isLogic(this)) {
        return evalSimple(this, data);
    }
    // A chain of conditions makes a tree as deep as the chain is long, so that the walk keeps its
    // own stack.
    PendingNodes pending;
    const zelDbMatch* node = this;
    for (;;) {
        for (; isLogic(node); node = node->left) {
            pending.push(node);
        }
        const bool holds = evalSimple(node, data).i != 0;
        while (!pending.isEmpty() && (pending.top()->op == CondOR) == holds) {
            pending.pop();
        }
        if (pending.isEmpty()) {
            return integer(holds ? 1 : 0);
        }
        node = pending.top()->right;
        pending.pop();
    }
}
