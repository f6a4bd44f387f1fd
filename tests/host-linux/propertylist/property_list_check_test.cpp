#include "platform/linux/propertylist/property_list_check.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/host-linux/propertylist/binary_list.h"

namespace purlock::host_linux {
namespace {

using test::BinaryList;

/// {"key": ["text", "text"]}: 5 values, 7 + 2 * 4 + 2 * 4 + 8 bytes of content.
std::string sample() {
    BinaryList list;
    const auto key = list.addText("key");
    const auto text = list.addText("text");
    return list.file(list.addDictionary({key}, {list.addArray({text, text})}));
}

struct LimitRow {
    const char* name;
    PropertyListLimits limits;
    bool safe;
};

const LimitRow binaryRows[] = {
    {"the usual limits", {}, true},
    {"as many values", {.values = 5}, true},
    {"one value too many", {.values = 4}, false},
    {"as deep", {.depth = 2}, true},
    {"one level too deep", {.depth = 1}, false},
    {"larger than the file", {.bytes = 1000}, true},
    {"smaller than the file", {.bytes = 50}, false},
};

TEST(PropertyListCheck, CountsABinaryListByItsMentions) {
    for (const LimitRow& row : binaryRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(isSafeBinaryPropertyList(sample(), row.limits), row.safe);
    }
}

TEST(PropertyListCheck, CountsATextAtEachMention) {
    BinaryList list;
    const auto text = list.addText(std::string(100, 'x'));
    const std::string file = list.file(list.addArray({text, text, text, text, text, text}));
    EXPECT_TRUE(isSafeBinaryPropertyList(file, {.bytes = 624}));
    EXPECT_FALSE(isSafeBinaryPropertyList(file, {.bytes = 623}));
}

struct XmlRow {
    const char* name;
    const char* text;
    PropertyListLimits limits;
    bool safe;
};

const XmlRow xmlRows[] = {
    {"nothing", "", {}, true},
    {"as many tags", "<a><b>", {.values = 2}, true},
    {"one tag too many", "<a><b><c>", {.values = 2}, false},
    {"as many bytes", "<a>", {.bytes = 3}, true},
    {"one byte too many", "<a>", {.bytes = 2}, false},
    {"entities in two texts", "&1<&2<", {.entityWork = 4}, true},
    {"entities in one text", "&1&2<", {.entityWork = 7}, false},
    {"entities in one text, just so", "&1&2<", {.entityWork = 8}, true},
    {"a comment joins two texts", "&<!--<&", {.entityWork = 13}, false},
    {"a CDATA section joins two texts", "&<![<&", {.entityWork = 11}, false},
};

TEST(PropertyListCheck, CountsTagsAndEntitiesOfXml) {
    for (const XmlRow& row : xmlRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(isSafeXmlPropertyList(row.text, row.limits), row.safe);
    }
}

}  // namespace
}  // namespace purlock::host_linux
