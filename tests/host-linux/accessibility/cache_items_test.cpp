#include "platform/linux/accessibility/cache_items.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace purlock::host_linux {
namespace {

using List = BusValue::List;

constexpr const char* peer = ":1.7";
const std::string root(applicationElementPath);

BusValue reference(const std::string& path, const char* name = peer) {
    return BusValue(List{BusValue(name), BusValue(path)});
}

BusValue number(std::int64_t value) {
    return BusValue(value);
}

BusValue states(std::int64_t word) {
    return BusValue(List{number(word), number(0)});
}

const BusValue text(List{BusValue("org.a11y.atspi.Accessible"), BusValue("org.a11y.atspi.Text")});
const BusValue visible = states(std::int64_t{1} << 30);

struct ItemRow {
    const char* name;
    BusValue item;
    std::optional<CacheItem> expected;
};

class CacheItems : public ::testing::TestWithParam<ItemRow> {};

TEST_P(CacheItems, AreReadInBothForms) {
    EXPECT_EQ(parseCacheItem(GetParam().item, peer), GetParam().expected);
}

const ItemRow itemRows[] = {
    {"NewForm",
     BusValue(List{reference("/a"), reference(root), reference("/p"), number(3), number(2), text,
                   BusValue("name"), number(29), BusValue("description"), visible}),
     CacheItem{"/a", "/p", 3, {}, "name", "description", true, true, 2, 29}},
    {"OldForm",
     BusValue(List{reference("/a"), reference(root), reference("/p"),
                   BusValue(List{reference("/c"), reference("/d", ":1.8"), reference("/e")}),
                   BusValue(List{}), BusValue("name"), number(29), BusValue("description"),
                   states(std::int64_t{1} << 25)}),
     CacheItem{"/a", "/p", 0, {"/c", "/e"}, "name", "description", false, true, 0, 29}},
    {"Hidden",
     BusValue(List{reference("/a"), reference(root), reference("/p"), number(0), number(0), BusValue(List{}),
                   BusValue(""), number(0), BusValue(""), states(5)}),
     CacheItem{"/a", "/p", 0, {}, "", "", false, false}},
    {"AnotherPeersObject",
     BusValue(List{reference("/a", ":1.8"), reference(root), reference("/p"), number(0), number(0), text,
                   BusValue("name"), number(0), BusValue(""), visible}),
     std::nullopt},
    {"AnotherPeersParent",
     BusValue(List{reference("/a"), reference(root), reference("/p", ":1.8"), number(0), number(0),
                   BusValue(List{}), BusValue("name"), number(0), BusValue(""), visible}),
     CacheItem{"/a", "", 0, {}, "name", "", false, true}},
    {"CutAfterTheIndex", BusValue(List{reference("/a"), reference(root), reference("/p"), number(1)}),
     CacheItem{"/a", "/p", 1, {}, "", "", false, false}},
    {"WrongTypesEverywhere",
     BusValue(List{reference("/a"), number(1), number(2), number(3), BusValue(true), BusValue("x"), number(4),
                   BusValue("y"), BusValue(0.5), BusValue("z")}),
     CacheItem{"/a", "", 3, {}, "", "", false, false}},
    {"NoIndexAndNoChildren", BusValue(List{reference("/a"), reference(root), reference("/p"), BusValue("x")}),
     std::nullopt},
    {"EmptyPath", BusValue(List{reference(""), reference(root), reference("/p"), number(0)}), std::nullopt},
    {"Text", BusValue("x"), std::nullopt},
    {"Empty", BusValue(List{}), std::nullopt},
    {"Absent", BusValue(), std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(Rows, CacheItems, ::testing::ValuesIn(itemRows),
                         [](const auto& row) { return row.param.name; });

CacheItem item(const std::string& path, const std::string& parent, std::int64_t index,
               const std::string& name) {
    return {path, parent, index, {}, name, "", false, true};
}

/// The tree as one line: each element's title, its children in brackets.
std::string outline(const Snapshot& snapshot, std::uint32_t node = 0) {
    const SnapshotNode& element = snapshot.nodes[node];
    std::string line = element.title.value_or("-");
    if (element.children.empty()) return line;
    line += "(";
    for (const std::uint32_t child : element.children) line += outline(snapshot, child) + " ";
    line.back() = ')';
    return line;
}

struct TreeRow {
    const char* name;
    std::vector<CacheItem> items;
    std::string expected;  // empty for none
};

class CachedTrees : public ::testing::TestWithParam<TreeRow> {};

TEST_P(CachedTrees, AreBuilt) {
    const auto tree = buildTree(GetParam().items, {});
    EXPECT_EQ(tree ? outline(tree->snapshot) : "", GetParam().expected);
}

std::vector<CacheItem> chain(int length) {
    std::vector<CacheItem> items{item(root, "", 0, "0")};
    for (int i = 1; i <= length; ++i) {
        items.push_back(
            item("/" + std::to_string(i), i == 1 ? root : "/" + std::to_string(i - 1), 0, std::to_string(i)));
    }
    return items;
}

const TreeRow treeRows[] = {
    {"Nothing", {}, ""},
    {"ApplicationAlone", {item(root, "", 0, "app")}, ""},
    {"NoApplication", {item("/a", "/b", 0, "a"), item("/b", "", 0, "b")}, ""},
    {"ChildrenInOrderWhateverTheItemsOrder",
     {item("/c", root, 2, "c"), item("/a", root, 0, "a"), item(root, "", 0, "app"), item("/b", root, 1, "b")},
     "app(a b c)"},
    {"EqualIndicesKeepTheItemsOrder",
     {item(root, "", 0, "app"), item("/b", root, -1, "b"), item("/a", root, -1, "a")},
     "app(b a)"},
    {"HiddenWindowsAreLeftOut",
     {item(root, "", 0, "app"), {"/a", root, 0, {}, "a", "", false, false}, item("/b", root, 1, "b")},
     "app(b)"},
    {"HiddenElementsWithinAWindowArePassedOver",
     {item(root, "", 0, "app"), item("/w", root, 0, "w"), {"/a", "/w", 0, {}, "a", "", false, false}},
     "app(w)"},
    {"AnElementThatIsItsOwnParent",
     {item(root, root, 0, "app"), item("/a", root, 0, "a"), item("/b", "/b", 0, "b")},
     "app(a)"},
    {"ACycleBesideTheTree",
     {item(root, "", 0, "app"), item("/a", root, 0, "a"), item("/b", "/c", 0, "b"), item("/c", "/b", 0, "c")},
     "app(a)"},
    {"ACycleOfListedChildren",
     {{root, "", 0, {"/a"}, "app", "", false, true},
      {"/a", root, 0, {"/b", root}, "a", "", false, true},
      {"/b", "/a", 0, {"/a", "/b"}, "b", "", false, true}},
     "app(a(b))"},
    {"ListedChildrenDecideTheOrder",
     {{root, "", 0, {"/b", "/a", "/gone"}, "app", "", false, true},
      {"/a", root, 0, {}, "a", "", false, true},
      {"/b", root, 0, {}, "b", "", false, true}},
     "app(b a)"},
    {"TheSameItemTwice",
     {item(root, "", 0, "app"), item("/a", root, 0, "first"), item("/a", root, 1, "second")},
     "app(first)"},
    {"AClosedMenuIsPassedOverWithItsEntries",
     {item(root, "", 0, "app"),
      item("/combo", root, 0, "combo"),
      {"/menu", "/combo", 0, {}, "menu", "", false, false},
      item("/normal", "/menu", 0, "normal"),
      item("/high", "/combo", 1, "high")},
     "app(combo(high))"},
    {"WhatIsNotOnTheScreenNeedNotBeWhole",
     {item(root, "", 0, "app"), {"/w", root, 0, {}, "w", "", false, false, 7}, item("/a", root, 1, "a")},
     "app(a)"},
    {"AnElementWithoutAllOfItsChildren",
     {item(root, "", 0, "app"), {"/w", root, 0, {}, "w", "", false, true, 2}, item("/a", "/w", 0, "a")},
     ""},
    {"AnElementWithAllOfItsChildren",
     {item(root, "", 0, "app"), {"/w", root, 0, {}, "w", "", false, true, 1}, item("/a", "/w", 0, "a")},
     "app(w(a))"},
    {"AnElementListedTwiceWithAllOfItsChildren",
     {item(root, "", 0, "app"),
      {"/w", root, 0, {}, "w", "", false, true, 1},
      {"/w", root, 0, {}, "w", "", false, true, 1},
      item("/a", "/w", 0, "a")},
     "app(w(a))"},
    {"ATableWithoutItsCells",
     {item(root, "", 0, "app"),
      {root.substr(0, root.size() - 4) + "7", root, 0, {}, "t", "", false, true, 9}},
     "app(t)"},
    {"TwelveLevels", chain(12), "0(1(2(3(4(5(6(7(8(9(10(11(12))))))))))))"},
    {"ThirteenLevelsEndAtTheTwelfth", chain(13), "0(1(2(3(4(5(6(7(8(9(10(11(12))))))))))))"},
};

INSTANTIATE_TEST_SUITE_P(Rows, CachedTrees, ::testing::ValuesIn(treeRows),
                         [](const auto& row) { return row.param.name; });

TEST(CachedTree, KeepsItsBounds) {
    std::vector<CacheItem> items{item(root, "", 0, "app")};
    for (int i = 0; i < 100; ++i) {
        items.push_back(item("/" + std::to_string(i), root, i, std::string(10, 'x')));
    }
    items[1].name = std::string(11, 'x');
    const SnapshotLimits limits{.elements = 50, .textBytes = 10, .totalTextBytes = 33};
    const auto tree = buildTree(items, limits);
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->snapshot.nodes.size(), 50U);
    EXPECT_EQ(tree->snapshot.nodes[1].title, std::nullopt);
    EXPECT_EQ(tree->snapshot.nodes[4].title, std::string(10, 'x'));
    EXPECT_EQ(tree->snapshot.nodes[5].title, std::nullopt);  // 3 + 3 * 10 bytes are spent
}

TEST(CachedTree, ListsTheElementsWhoseContentCounts) {
    constexpr int label = 29;
    constexpr int password = 40;
    constexpr int entry = 79;
    constexpr int tableRow = 90;
    const auto element = [](const char* path, int index, const char* name, bool hasText, int role) {
        return CacheItem{path, root, index, {}, name, "", hasText, true, 0, role};
    };
    const std::vector<CacheItem> items{item(root, "", 0, "app"),
                                       element("/a", 0, "", true, label),
                                       element("/b", 1, "named", true, label),
                                       element("/c", 2, "", false, label),
                                       element("/d", 3, "named", true, entry),
                                       element("/e", 4, "", true, password),
                                       element("/f", 5, "named", false, entry),
                                       element("/g", 6, "", true, tableRow)};
    EXPECT_EQ(buildTree(items, {})->textElements, (std::vector<TextElement>{{1, "/a"}, {4, "/d"}}));
}

}  // namespace
}  // namespace purlock::host_linux
