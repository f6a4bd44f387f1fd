#include "platform/linux/propertylist/property_list_parser.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/host-linux/propertylist/binary_list.h"
#include "tests/support/sanitizers.h"
#include "tests/support/thread_processor_time.h"

namespace purlock::host_linux {
namespace {

using test::BinaryList;
using test::xmlList;
using Dictionary = PropertyListDictionary;

const PropertyListValue other = OtherPropertyListType{};

PropertyListValue integer(std::int64_t value) {
    return value;
}

// What libplist itself writes

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using OwnedPlist = std::unique_ptr<void, PlistDeleter>;

/// One value of every type.
OwnedPlist everyType() {
    OwnedPlist root(plist_new_dict());
    plist_dict_set_item(root.get(), "text", plist_new_string("HI-RES LOSSLESS"));
    plist_dict_set_item(root.get(), "unicode", plist_new_string("Für Elise – 歌"));
    plist_dict_set_item(root.get(), "empty", plist_new_string(""));
    plist_dict_set_item(root.get(), "zero", plist_new_uint(0));
    plist_dict_set_item(root.get(), "three", plist_new_uint(3));
    plist_dict_set_item(root.get(), "large", plist_new_uint(1'000'000'007));
    plist_dict_set_item(root.get(), "true", plist_new_bool(1));
    plist_dict_set_item(root.get(), "false", plist_new_bool(0));
    plist_dict_set_item(root.get(), "real", plist_new_real(3.0));
    plist_dict_set_item(root.get(), "date", plist_new_date(1, 0));
    plist_dict_set_item(root.get(), "data", plist_new_data("abc", 3));
    plist_dict_set_item(root.get(), "array", plist_new_array());
    plist_dict_set_item(root.get(), "dictionary", plist_new_dict());
    return root;
}

const Dictionary everyTypeRead = {
    {"text", "HI-RES LOSSLESS"},
    {"unicode", "Für Elise – 歌"},
    {"empty", ""},
    {"zero", integer(0)},
    {"three", integer(3)},
    {"large", integer(1'000'000'007)},
    {"true", true},
    {"false", false},
    {"real", other},
    {"date", other},
    {"data", other},
    {"array", other},
    {"dictionary", other},
};

using Writer = void (*)(plist_t, char**, std::uint32_t*);

/// The list as libplist writes it.
std::string written(const OwnedPlist& root, Writer write) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    write(root.get(), &bytes, &length);
    std::string list(bytes, length);
    std::free(bytes);
    return list;
}

TEST(PropertyListParser, ReadsWhatLibplistWritesInBinary) {
    const std::string list = written(everyType(), [](auto... all) { plist_to_bin(all...); });
    EXPECT_TRUE(list.starts_with("bplist00"));
    EXPECT_EQ(parsePropertyList(list), everyTypeRead);
}

TEST(PropertyListParser, ReadsWhatLibplistWritesInXml) {
    const std::string list = written(everyType(), [](auto... all) { plist_to_xml(all...); });
    EXPECT_TRUE(list.starts_with("<?xml"));
    EXPECT_EQ(parsePropertyList(list), everyTypeRead);
}

// What was written by hand

struct XmlRow {
    const char* name;
    std::string content;
    std::optional<Dictionary> expected;
};

const std::vector<XmlRow>& xmlRows() {
    static const std::vector<XmlRow> rows = {
        {"an empty dictionary", "<dict></dict>", Dictionary{}},
        {"a closed dictionary", "<dict/>", Dictionary{}},
        {"a text", "<dict><key>a</key><string>High</string></dict>", Dictionary{{"a", "High"}}},
        {"an empty text", "<dict><key>a</key><string/></dict>", Dictionary{{"a", ""}}},
        {"white space in a text stays", "<dict><key>a</key><string> b\n</string></dict>",
         Dictionary{{"a", " b\n"}}},
        {"entities", "<dict><key>a</key><string>&lt;&amp;&#65;</string></dict>", Dictionary{{"a", "<&A"}}},
        {"a comment", "<dict><!-- &amp; --><key>a</key><true/></dict>", Dictionary{{"a", true}}},
        {"an integer", "<dict><key>a</key><integer>7</integer></dict>", Dictionary{{"a", integer(7)}}},
        {"a negative integer", "<dict><key>a</key><integer>-1</integer></dict>",
         Dictionary{{"a", integer(-1)}}},
        {"an integer beyond the signed range",
         "<dict><key>a</key><integer>18446744073709551615</integer></dict>", Dictionary{{"a", integer(-1)}}},
        {"a real with no fraction", "<dict><key>a</key><real>3</real></dict>", Dictionary{{"a", other}}},
        {"true and false", "<dict><key>a</key><true/><key>b</key><false/></dict>",
         Dictionary{{"a", true}, {"b", false}}},
        {"another type and what follows it",
         "<dict><key>a</key><array><integer>1</integer></array><key>b</key><integer>2</integer></dict>",
         Dictionary{{"a", other}, {"b", integer(2)}}},
        {"an array at the root", "<array><true/></array>", std::nullopt},
        {"a text at the root", "<string>a</string>", std::nullopt},
        {"nothing at the root", "", std::nullopt},
        {"a dictionary that does not end", "<dict><key>a</key><true/>", std::nullopt},
        {"a text that does not end", "<dict><key>a</key><string>b", std::nullopt},
        {"an unknown element", "<dict><key>a</key><number>1</number></dict>", std::nullopt},
    };
    return rows;
}

TEST(PropertyListParser, ReadsXml) {
    for (const XmlRow& row : xmlRows()) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parsePropertyList(xmlList(row.content)), row.expected);
    }
}

/// A list with the one key "a", whose value has these bytes.
std::string binaryValue(const std::string& object) {
    BinaryList list;
    const auto key = list.addText("a");
    const auto value = list.add(object);
    return list.file(list.addDictionary({key}, {value}));
}

struct BinaryRow {
    const char* name;
    std::string value;
    std::optional<PropertyListValue> expected;  // absent: the whole list is
};

const std::vector<BinaryRow>& binaryRows() {
    const auto bytes = [](std::initializer_list<int> list) {
        std::string text;
        for (const int byte : list) text += static_cast<char>(byte);
        return text;
    };
    static const std::vector<BinaryRow> rows = {
        {"false", bytes({0x08}), false},
        {"true", bytes({0x09}), true},
        {"an integer of 1 byte", bytes({0x10, 3}), integer(3)},
        {"an integer of 2 bytes", bytes({0x11, 1, 0}), integer(256)},
        {"an integer of 4 bytes", bytes({0x12, 0, 1, 0, 0}), integer(65536)},
        {"an integer of 8 bytes", bytes({0x13, 0, 0, 0, 0, 0, 0, 0, 3}), integer(3)},
        {"a negative integer", bytes({0x13, 255, 255, 255, 255, 255, 255, 255, 255}), integer(-1)},
        {"an integer of 16 bytes that fits 8",
         bytes({0x14, 0, 0, 0, 0, 0, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255}), integer(-1)},
        {"an integer of 16 bytes that does not",
         bytes({0x14, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 3}), std::nullopt},
        {"a real of 4 bytes", bytes({0x22, 0x40, 0x40, 0, 0}), other},
        {"a real of 8 bytes", bytes({0x23, 0x40, 0x08, 0, 0, 0, 0, 0, 0}), other},
        {"a date", bytes({0x33, 0, 0, 0, 0, 0, 0, 0, 0}), other},
        {"data", bytes({0x42, 1, 2}), other},
        {"a text", bytes({0x52, 'h', 'i'}), "hi"},
        {"an empty text", bytes({0x50}), ""},
        {"a text ends at a zero byte", bytes({0x53, 'a', 0, 'b'}), "a"},
        {"a text of 20 bytes", BinaryList::marker(0x50, 20) + std::string(20, 'x'), std::string(20, 'x')},
        {"a UTF-16 text", bytes({0x62, 0x6B, 0x4C, 0x00, 0xFC}), "歌ü"},
        {"a UTF-16 text with a pair", bytes({0x62, 0xD8, 0x3C, 0xDF, 0xB5}), "\U0001F3B5"},
        {"an identifier", bytes({0x80, 3}), other},
        {"an empty array", bytes({0xA0}), other},
        {"an empty dictionary", bytes({0xD0}), other},
        {"an unknown kind", bytes({0x70}), std::nullopt},
        {"a text that leaves the objects", bytes({0x5E, 'h', 'i'}), std::nullopt},
        {"a count that leaves the objects", bytes({0x5F, 0x13, 255, 255, 255, 255, 255, 255, 255, 255}),
         std::nullopt},
        {"a count that is no integer", bytes({0x5F, 0x42, 1, 2}), std::nullopt},
    };
    return rows;
}

TEST(PropertyListParser, ReadsBinary) {
    for (const BinaryRow& row : binaryRows()) {
        SCOPED_TRACE(row.name);
        const auto expected = row.expected ? std::optional(Dictionary{{"a", *row.expected}}) : std::nullopt;
        EXPECT_EQ(parsePropertyList(binaryValue(row.value)), expected);
    }
}

TEST(PropertyListParser, AnAsciiTextThatIsNoneBecomesWellFormed) {
    const auto list = parsePropertyList(binaryValue("\x52\xFF!"));
    ASSERT_TRUE(list);
    EXPECT_EQ(list->at("a"), PropertyListValue("\uFFFD!"));
}

TEST(PropertyListParser, ABinaryRootThatIsNoDictionaryIsAbsent) {
    BinaryList list;
    EXPECT_EQ(parsePropertyList(list.file(list.addText("a"))), std::nullopt);
    BinaryList array;
    EXPECT_EQ(parsePropertyList(array.file(array.addArray({}))), std::nullopt);
}

// What is hostile

std::string repeated(const std::string& text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) all += text;
    return all;
}

/// Arrays in one another, the innermost empty, below a dictionary.
std::string nestedBinary(std::uint32_t depth) {
    BinaryList list;
    const auto key = list.addText("a");
    auto value = list.addArray({});
    for (std::uint32_t i = 1; i < depth; ++i) value = list.addArray({value});
    return list.file(list.addDictionary({key}, {value}));
}

/// Arrays that each name the next one twice: 2 to the power of `depth` values in a small file.
std::string doublingBinary(std::uint32_t depth) {
    BinaryList list;
    const auto key = list.addText("a");
    auto value = list.addText("ha");
    for (std::uint32_t i = 0; i < depth; ++i) value = list.addArray({value, value});
    return list.file(list.addDictionary({key}, {value}));
}

/// A dictionary with the same long key many times.
std::string repeatedKeyBinary(std::size_t length, std::size_t mentions) {
    BinaryList list;
    const std::vector<BinaryList::Reference> keys(mentions, list.addText(std::string(length, 'x')));
    return list.file(list.addDictionary(keys, keys));
}

/// A long text that is mentioned many times.
std::string repeatedTextBinary(std::size_t length, std::size_t mentions) {
    BinaryList list;
    const auto key = list.addText("a");
    const auto text = list.addText(std::string(length, 'x'));
    const auto array = list.addArray(std::vector<BinaryList::Reference>(mentions, text));
    return list.file(list.addDictionary({key}, {array}));
}

std::string ownChildBinary() {
    BinaryList list;
    list.addText("a");
    return list.file(list.addDictionary({0}, {1}));
}

std::string cycleBinary() {
    BinaryList list;
    list.addText("a");
    list.addArray({2});
    list.addArray({1});
    return list.file(list.addDictionary({0}, {1}));
}

std::string integerKeyBinary() {
    BinaryList list;
    const auto key = list.addInteger(1);
    return list.file(list.addDictionary({key}, {key}));
}

std::string oddKeyBinary(const std::string& object) {
    BinaryList list;
    const auto key = list.add(object);
    return list.file(list.addDictionary({key}, {list.addBoolean(true)}));
}

struct HostileRow {
    const char* name;
    std::string list;
};

const std::vector<HostileRow>& hostileRows() {
    static const std::vector<HostileRow> rows = {
        {"nothing", ""},
        {"zero bytes", std::string(1000, '\0')},
        {"the magic alone", "bplist00"},
        {"the beginning of the magic", "bplist"},
        {"another version", "bplist15" + std::string(100, '\0')},
        {"a trailer of zero bytes", "bplist00" + std::string(64, '\0')},
        {"a trailer of all ones", "bplist00" + std::string(64, '\xFF')},
        {"binary nested 100,000 deep", nestedBinary(100'000)},
        {"binary nested 65 deep", nestedBinary(65)},
        {"binary that doubles 60 times", doublingBinary(60)},
        {"binary that doubles 20 times", doublingBinary(20)},
        {"a text of 1 MB mentioned 10,000 times", repeatedTextBinary(1'000'000, 10'000)},
        {"a key of 1 MB mentioned 100,000 times", repeatedKeyBinary(1'000'000, 100'000)},
        {"a dictionary that is its own child", ownChildBinary()},
        {"arrays in a cycle", cycleBinary()},
        {"a key that is no text", integerKeyBinary()},
        {"a key with a zero byte", oddKeyBinary(std::string("\x53"
                                                            "a\0b",
                                                            4))},
        {"a key with a zero UTF-16 unit", oddKeyBinary(std::string("\x62\0a\0\0", 5))},
        {"a key that leaves the objects", oddKeyBinary("\x5E"
                                                       "a")},
        {"a zero byte in XML", xmlList(std::string("<dict><key>a\0b</key><true/></dict>", 35))},
        {"a top object that is not there", BinaryList().file(0)},
        {"an immense top object", BinaryList().file(~std::uint64_t{0})},
        {"XML nested 300,000 deep", xmlList(repeated("<array>", 300'000) + repeated("</array>", 300'000))},
        {"XML that opens for 4 MB", repeated("<array>", 599'000)},
        {"a text of 4 MB of entities",
         xmlList("<dict><key>a</key><string>" + repeated("&amp;", 800'000) + "</string></dict>")},
        {"entities behind comments",
         xmlList("<dict><key>a</key><string>" + repeated("&amp;<!-- <b> -->", 9'000) + "</string></dict>")},
        {"entities behind CDATA",
         xmlList("<dict><key>a</key><string>" + repeated(repeated("&amp;", 100) + "<![CDATA[<b]]>", 5'000) +
                 "</string></dict>")},
        {"300,000 keys", xmlList("<dict>" + repeated("<key>a</key><true/>", 100'000) + "</dict>")},
        {"more than 4 MB",
         xmlList("<dict><key>a</key><string>" + std::string(5'000'000, 'x') + "</string></dict>")},
        {"an entity that does not end", xmlList("<dict><key>a</key><string>&amp</string></dict>")},
        {"a comment that does not end", "<?xml version=\"1.0\"?><!-- "},
        {"another markup", "<html><body/></html>"},
        {"a text file", "audioQuality = 3;"},
        {"JSON", "{\"audioQuality\": 3}"},
        {"half of a wide character file", std::string("<\0d\0i\0c\0t\0/\0>\0", 14)},
    };
    return rows;
}

TEST(PropertyListParser, AHostileListIsAbsentAndSoon) {
    for (const HostileRow& row : hostileRows()) {
        SCOPED_TRACE(row.name);
        const auto start = test::threadProcessorTime();
        EXPECT_EQ(parsePropertyList(row.list), std::nullopt);
        const std::chrono::duration<double> taken = test::threadProcessorTime() - start;
        EXPECT_LT(taken.count(), test::isSanitized ? 5 : 0.5);  // seconds
    }
}

TEST(PropertyListParser, NestingUpToTheLimitIsRead) {
    EXPECT_EQ(parsePropertyList(nestedBinary(63)), (Dictionary{{"a", other}}));
    EXPECT_EQ(parsePropertyList(doublingBinary(10)), (Dictionary{{"a", other}}));
    const std::string xml = repeated("<array>", 9'000) + repeated("</array>", 9'000);
    EXPECT_EQ(parsePropertyList(xmlList("<dict><key>a</key>" + xml + "</dict>")), (Dictionary{{"a", other}}));
}

/// Of a list cut short nothing is read, wherever it is cut; of the XML one all is there once the root has
/// ended.
TEST(PropertyListParser, ATruncatedListIsAbsent) {
    const std::string binary = written(everyType(), [](auto... all) { plist_to_bin(all...); });
    for (std::size_t length = 0; length < binary.size(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_EQ(parsePropertyList(binary.substr(0, length)), std::nullopt);
    }
    const std::string xml = written(everyType(), [](auto... all) { plist_to_xml(all...); });
    const std::size_t end = xml.rfind("</dict>");
    for (std::size_t length = 0; length < end; ++length) {
        SCOPED_TRACE(length);
        EXPECT_EQ(parsePropertyList(xml.substr(0, length)), std::nullopt);
    }
}

/// No single changed byte makes the parser crash, hang or read outside of the list (seen by the sanitizers).
TEST(PropertyListParser, SurvivesEveryChangedByte) {
    std::size_t refused = 0;
    for (const Writer write : {Writer([](auto... all) { plist_to_bin(all...); }),
                               Writer([](auto... all) { plist_to_xml(all...); })}) {
        const std::string list = written(everyType(), write);
        for (std::size_t i = 0; i < list.size(); ++i) {
            for (const char byte : {'\x00', '\x7F', '\xFF', '\xA1', '<', '&'}) {
                std::string changed = list;
                changed[i] = byte;
                refused += parsePropertyList(changed) ? 0U : 1U;
            }
        }
    }
    EXPECT_GT(refused, 0U);
}

}  // namespace
}  // namespace purlock::host_linux
