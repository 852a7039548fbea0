#include <zel/zelDictionary.h>

#include "platform/asciiCase.h"
#include "registry/text.h"

#include <cstring>

zelName::zelName(const char* id) {
    setID(id);
}

zelName::~zelName() {
    delete[] name;
}

void zelName::setID(const char* id) {
    name = id == nullptr ? nullptr : zel::registry::copyText(id);
}

const char* zelName::getID() const {
    return name;
}

zelDictionary::zelDictionary(int maxEntries, int caseSensitive)
    : zelHashTable(maxEntries), ignoreCase(caseSensitive == 0 ? 1 : 0) {}

zelDictionary::~zelDictionary() = default;

int zelDictionary::insert(zelName* elem) {
    elem->hashIndex = hash(elem->getID());
    return zelHashTable::insert(elem);
}

zelName* zelDictionary::find(const char* s, int insertIfNeeded) {
    const unsigned int h = hash(s);
    if (zelHashElem* elem = zelHashTable::find(h, s)) {
        return static_cast<zelName*>(elem);
    }
    if (!insertIfNeeded) {
        return nullptr;
    }
    auto* made = new zelName(s);
    made->hashIndex = h;
    zelHashTable::insert(made);
    return made;
}

int zelDictionary::match(const void* key, const zelHashElem* elem) {
    const char* wanted = static_cast<const char*>(key);
    const char* id = static_cast<const zelName*>(elem)->getID();
    const int order =
        ignoreCase ? zel::platform::compareIgnoreCase(wanted, id) : std::strcmp(wanted, id);
    return order == 0 ? 1 : 0;
}

unsigned int zelDictionary::hash(const char* s) {
    unsigned int h = 0;
    unsigned int shift = 0;
    for (; *s != '\0'; ++s) {
        const char c = ignoreCase ? zel::platform::toLowerAscii(*s) : *s;
        // Bytes of 0x80 and above count as negative numbers, whatever sign the compiler's char has.
        h ^= static_cast<unsigned int>(static_cast<signed char>(c)) << shift;
        shift += 17;
        if (shift >= 24) {
            shift -= 24;
        }
    }
    return h;
}

zelDictionary* zelGlobalDict() {
    static zelDictionary* const nameSpace = new zelDictionary(0, 1);
    return nameSpace;
}

zelName* zelGlobalName(const char* s) {
    return zelGlobalDict()->find(s, 1);
}

zelName* zelGlobalName(zelName* nm) {
    zelDictionary* names = zelGlobalDict();
    if (zelName* known = names->find(nm->getID(), 0)) {
        return known == nm ? nm : nullptr;
    }
    names->insert(nm);
    return nm;
}
