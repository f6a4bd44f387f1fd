#include "base/json.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/malformed_utf8.h"

namespace purlock {
namespace {

using Array = JsonValue::Array;
using Object = JsonValue::Object;

struct JsonRow {
    const char* name;
    JsonValue value;
    std::string compact;
};

const JsonRow jsonRows[] = {
    {"null", {}, "null"},
    {"true", true, "true"},
    {"false", false, "false"},
    {"integer", std::int64_t{-9223372036854775807 - 1}, "-9223372036854775808"},
    {"unsigned integer", std::uint32_t{4294967295}, "4294967295"},
    {"double without a fraction", 44100.0, "44100"},
    {"product of a format", 1411200.0, "1411200"},
    {"double below zero", -44100.0, "-44100"},
    {"whole beyond what is exact", 1e16, "10000000000000000"},
    {"double zero", 0.0, "0"},
    {"negative zero", -0.0, "-0"},
    {"seventeen digits", 0.45, "0.45000000000000001"},
    {"seventeen digits above one", 129.9, "129.90000000000001"},
    {"exact fraction", 44100.5, "44100.5"},
    {"large", 1e17, "1e+17"},
    {"largest without exponent", 12345678901234568.0, "12345678901234568"},
    {"small", 1e-5, "1.0000000000000001e-05"},
    {"text", "DAC", R"("DAC")"},
    {"empty text", "", R"("")"},
    {"escapes at both ends", "/a/", R"("\/a\/")"},
    {"quotation mark and backslash", "a\"b\\c", R"("a\"b\\c")"},
    {"slash", "16/44.1", R"("16\/44.1")"},
    {"short escapes", "\b\f\n\r\t", R"("\b\f\n\r\t")"},
    {"other controls", "\x01\x07\x0B\x1F", R"("\u0001\u0007\u000b\u001f")"},
    {"zero byte", std::string("\0", 1), R"("\u0000")"},
    {"delete is no control here", "\x7F", "\"\x7F\""},
    {"beyond ASCII", "Björk — 📌", "\"Björk — 📌\""},
    {"line separator", "\u2028", "\"\u2028\""},
    {"empty array", Array{}, "[]"},
    {"array", Array{1.0, "a", {}}, R"([1,"a",null])"},
    {"empty object", Object{}, "{}"},
    {"keys are sorted", Object({{"b", 1.0}, {"a", 2.0}, {"B", 3.0}}), R"({"B":3,"a":2,"b":1})"},
    {"keys are escaped", Object({{"a/\"", true}}), R"({"a\/\"":true})"},
    {"nested", Object({{"a", Array{Object({{"x", {}}})}}}), R"({"a":[{"x":null}]})"},
};

TEST(Json, Compact) {
    for (const JsonRow& row : jsonRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(jsonText(row.value, JsonLayout::compact), row.compact);
    }
}

const JsonRow prettyRows[] = {
    {"scalar", 4.0, "4"},
    {"one member", Object({{"key", 4.0}}), "{\n  \"key\" : 4\n}"},
    {"members", Object({{"b", {}}, {"a", true}}), "{\n  \"a\" : true,\n  \"b\" : null\n}"},
    {"nested object", Object({{"verdict", Object({{"headline", "No device"}, {"kind", "noDevice"}})}}),
     "{\n  \"verdict\" : {\n    \"headline\" : \"No device\",\n    \"kind\" : \"noDevice\"\n  }\n}"},
    {"array", Array{1.0, 2.0}, "[\n  1,\n  2\n]"},
    {"empty array", Array{}, "[\n\n]"},
    {"empty object", Object{}, "{\n\n}"},
    {"empty array inside", Object({{"a", Array{}}}), "{\n  \"a\" : [\n\n  ]\n}"},
    {"array of objects", Array{Object({{"a", 1.0}}), Object{}}, "[\n  {\n    \"a\" : 1\n  },\n  {\n\n  }\n]"},
};

TEST(Json, Pretty) {
    for (const JsonRow& row : prettyRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(jsonText(row.value, JsonLayout::pretty), row.compact);
    }
}

TEST(Json, ANumberThatIsNotFiniteCannotBeWritten) {
    for (const double value :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(jsonText(value, JsonLayout::compact), std::nullopt);
        EXPECT_EQ(jsonText(Array{1.0, value}, JsonLayout::pretty), std::nullopt);
        EXPECT_EQ(jsonText(Object({{"a", Object({{"b", value}})}, {"c", {}}}), JsonLayout::pretty),
                  std::nullopt);
    }
}

TEST(Json, AKeyIsGivenOnce) {
    EXPECT_DEATH(Object({{"a", 1.0}, {"b", 2.0}, {"a", 3.0}}), "a key of JSON given twice");
    Object object({{"a", 1.0}});
    EXPECT_DEATH(object.insert({"a", 1.0}), "a key of JSON given twice");
}

TEST(Json, MalformedTextBecomesReplacementCharacters) {
    EXPECT_EQ(jsonText("a\xFF\xC3", JsonLayout::compact), "\"a\uFFFD\uFFFD\"");
    for (const auto& [name, text] : test::malformedUtf8()) {
        SCOPED_TRACE(name);
        const auto written = jsonText(Object({{text, text}}), JsonLayout::compact);
        ASSERT_TRUE(written);
        EXPECT_NE(written->find(name == std::string("a zero byte") ? "\\u0000" : "\uFFFD"),
                  std::string::npos);
    }
}

}  // namespace
}  // namespace purlock
