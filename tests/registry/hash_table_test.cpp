#include <zel/zelDictionary.h>
#include <zel/zelHashTable.h>

#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

struct Element : zelHashElem {
    Element(unsigned hash, int number) : key(number) { hashIndex = hash; }
    int key;
};

class Table : public zelHashTable {
public:
    using zelHashTable::zelHashTable;
    int asked = 0;

protected:
    int match(const void* key, const zelHashElem* elem) override {
        ++asked;
        return *static_cast<const int*>(key) == static_cast<const Element*>(elem)->key;
    }
};

// A walk that ends leaves its index at the number of slots.
int countSlots(const zelHashTable& table) {
    int index = 0;
    while (table.next(index) != nullptr) {
    }
    return index;
}

// Key and slot of each element, in slot order.
using Layout = std::vector<std::pair<int, int>>;

Layout layoutOf(const zelHashTable& table) {
    Layout layout;
    int index = 0;
    while (auto* elem = static_cast<Element*>(table.next(index))) {
        layout.emplace_back(elem->key, index - 1);
    }
    return layout;
}

TEST(HashTable, SizesFollowTheWish) {
    const std::pair<int, int> sizes[] = {{-5, 131},       {0, 131},        {65, 131},
                                         {66, 257},       {128, 257},      {129, 521},
                                         {65519, 131041}, {65520, 131041}, {2147483647, 131041}};
    for (const auto& [wish, size] : sizes) {
        EXPECT_EQ(countSlots(Table(wish)), size) << wish;
    }
}

TEST(HashTable, GrowsAtHalfFullUpToTheLimit) {
    // The insertion at which the table grows, and the slots it has from then on.
    const std::pair<int, int> growth[] = {{67, 521},    {262, 2039},   {1021, 4093},
                                          {2048, 8191}, {4097, 32771}, {16387, 131041}};
    Table table(0);
    std::deque<Element> elements;
    const auto* next = std::begin(growth);
    int size = 131;
    for (int n = 1; n <= 131040; ++n) {
        elements.emplace_back(static_cast<unsigned>(n) * 2654435761U, n);
        ASSERT_EQ(table.insert(&elements.back()), 1) << n;
        if (next != std::end(growth) && n == next->first) {
            ASSERT_EQ(countSlots(table), next++->second) << n;
        } else if (next != std::end(growth) && n == next->first - 1) {
            ASSERT_EQ(countSlots(table), size) << n;
            size = next->second;
        }
    }
    Element refused(1, 0);
    EXPECT_EQ(table.insert(&refused), 0);
    EXPECT_EQ(table.getNumEntries(), 131040);
    int key = 77777;
    EXPECT_EQ(table.find(77777U * 2654435761U, &key), &elements[77776]);
}

TEST(HashTable, ProbesEvery127thSlotAndClosesGaps) {
    Table table(0);
    Element a(5, 1);
    Element b(136, 2);
    Element c(5, 3);
    Element alone(2, 4);
    for (Element* e : {&a, &b, &c, &alone, &a}) {
        EXPECT_EQ(table.insert(e), 1);
    }
    // 5, then 132 - 131, then 128.
    EXPECT_EQ(layoutOf(table), (Layout{{2, 1}, {4, 2}, {1, 5}, {3, 128}}));
    EXPECT_EQ(table.getNumEntries(), 4);

    EXPECT_EQ(table.remove(&a), 1);
    EXPECT_EQ(layoutOf(table), (Layout{{3, 1}, {4, 2}, {2, 5}}));
    EXPECT_EQ(table.remove(&a), 0);
    EXPECT_EQ(table.getNumEntries(), 3);

    table.clearStats();
    table.asked = 0;
    int key = 3;
    EXPECT_EQ(table.find(5, &key), &c);
    // The element in front has another hash, so its key is not compared.
    EXPECT_EQ(table.asked, 1);
    key = 9;
    EXPECT_EQ(table.find(5, &key), nullptr);
    EXPECT_EQ(table.lookCount, 2);
    EXPECT_EQ(table.totalLook, 2 + 3);
    EXPECT_EQ(table.maxLook, 3);

    table.clear();
    EXPECT_EQ(table.getNumEntries(), 0);
    EXPECT_EQ(countSlots(table), 131);
    EXPECT_EQ(table.lookCount, 2);
}

TEST(HashTable, FillsToTheLastButOneSlotWithoutGrowth) {
    for (const float fraction : {1.0F, 1e30F}) {
        Table table(0);
        table.setFullFraction(fraction);
        std::deque<Element> elements;
        for (int n = 0; n < 130; ++n) {
            elements.emplace_back(static_cast<unsigned>(n % 7), n);
            ASSERT_EQ(table.insert(&elements.back()), 1);
        }
        Element refused(3, 130);
        EXPECT_EQ(table.insert(&refused), 0);
        EXPECT_EQ(countSlots(table), 131);
    }
    Table eager(0);
    eager.setFullFraction(0.0F);
    Element one(1, 1);
    EXPECT_EQ(eager.insert(&one), 1);
    EXPECT_EQ(countSlots(eager), 131041);
}

TEST(HashTable, AgreesWithASetOverRandomOperations) {
    std::mt19937 random(20);
    std::deque<Element> elements;
    for (int n = 0; n < 900; ++n) {
        elements.emplace_back(random() % 97, n);
    }
    Table table(0);
    std::set<const zelHashElem*> model;
    for (int step = 0; step < 20000; ++step) {
        Element& elem = elements[random() % elements.size()];
        if (random() % 5 < 3) {
            EXPECT_EQ(table.insert(&elem), 1);
            model.insert(&elem);
        } else {
            EXPECT_EQ(table.remove(&elem), static_cast<int>(model.erase(&elem)));
        }
        ASSERT_EQ(table.getNumEntries(), static_cast<int>(model.size()));
        Element& wanted = elements[random() % elements.size()];
        ASSERT_EQ(table.find(wanted.hashIndex, &wanted.key) != nullptr, model.count(&wanted) == 1);
    }
    std::set<const zelHashElem*> walked;
    int index = 0;
    while (zelHashElem* elem = table.next(index)) {
        EXPECT_TRUE(walked.insert(elem).second);
    }
    EXPECT_EQ(walked, model);
}

TEST(Dictionary, HashesAsWorkedByHand) {
    const struct {
        const char* text;
        int caseSensitive;
        unsigned hash;
    } rows[] = {{"", 1, 0},
                {"abc", 1, 0xC58C61},
                {"ABC", 0, 0xC58C61},
                {"ABC", 1, 0x850C41},
                {"\x80", 1, 0xFFFFFF80},
                {"aaaaaaaa", 0,
                 0x61 ^ (0x61 << 17) ^ (0x61 << 10) ^ (0x61 << 3) ^ (0x61 << 20) ^ (0x61 << 13) ^
                     (0x61 << 6) ^ (0x61U << 23)}};
    for (const auto& row : rows) {
        zelDictionary names(0, row.caseSensitive);
        zelName name(row.text);
        EXPECT_EQ(names.insert(&name), 1);
        EXPECT_EQ(name.hashIndex, row.hash) << row.text;
    }
}

TEST(Dictionary, FindsNames) {
    zelDictionary folding(0, 0);
    zelDictionary exact(0, 1);
    zelName first("Abc");
    zelName second("aBC");
    zelName other("Abc");
    EXPECT_EQ(folding.insert(&first), 1);
    EXPECT_EQ(folding.insert(&second), 1);
    EXPECT_EQ(exact.insert(&other), 1);
    EXPECT_EQ(folding.getNumEntries(), 2);
    EXPECT_EQ(folding.find("ABC", 0), &first);
    EXPECT_EQ(exact.find("aBC", 0), nullptr);

    zelName* made = exact.find("new", 1);
    EXPECT_STREQ(made->getID(), "new");
    EXPECT_EQ(exact.find("new", 1), made);
    delete made;
}

TEST(GlobalNames, AreUnique) {
    static zelName mine("registered");
    static zelName late("registered");
    EXPECT_EQ(zelGlobalName(&mine), &mine);
    EXPECT_EQ(zelGlobalName(&mine), &mine);
    EXPECT_EQ(zelGlobalName(&late), nullptr);
    EXPECT_EQ(zelGlobalName("registered"), &mine);
    EXPECT_NE(zelGlobalName("Registered"), &mine);
    EXPECT_EQ(zelGlobalDict()->getNumEntries(), 2);
}

} // namespace
