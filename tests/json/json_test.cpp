// SPDX-License-Identifier: Apache-2.0
// What is JSON, and what paths give, by the embedded engine's operations.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "bop/frame/status.h"
#include "embedded/charset/database_charset.h"
#include "embedded/json/json_numbers.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/charset.h"
#include "engine/json.h"
#include "tests/contract/exact_block.h"

namespace {

using namespace std::string_literals;

struct parsed_document {
    exact_block text;
    json_reader* reader = json_open(nullptr);
    std::int32_t status;

    explicit parsed_document(const std::string& given) : text(given), status(json_parse(nullptr, reader, text.data(), text.length)) {}
    parsed_document(const parsed_document&) = delete;
    parsed_document& operator=(const parsed_document&) = delete;
    ~parsed_document() { json_close(nullptr, reader); }
};

std::int32_t parse(const std::string& text) { return parsed_document(text).status; }

// What a path gives in an array, or the status; `@3` where the text is no path from its fourth byte on.
std::string query(const std::string& text, const std::string& path_text, std::int32_t wrapper = JPATH_WRAPPER) {
    const parsed_document document(text);
    EXPECT_EQ(document.status, 0) << text;
    const exact_block characters(path_text);
    jpath* path = nullptr;
    std::uint32_t fault_at = 0;
    std::int32_t status = jpath_parse(nullptr, characters.data(), characters.length, &path, &fault_at);
    if (status != 0) {
        EXPECT_EQ(status, BIFUN_INVALID_JSON_PATH);
        EXPECT_EQ(path, nullptr);
        return "@"s.append(std::to_string(fault_at));
    }
    const std::uint8_t* result = nullptr;
    std::uint32_t length = 0;
    status = document.status == 0 ? jpath_get_json(nullptr, document.reader, path, wrapper, &result, &length) : document.status;
    const std::string given = status == 0 ? std::string(reinterpret_cast<const char*>(result), length) : std::to_string(status);
    jpath_free(nullptr, path);
    return given;
}

// ---- documents -----------------------------------------------------------------------------------------------------

TEST(JsonText, IsAccepted) {
    for (const std::string& text : {
             R"([])"s, //
             R"([[]  ])"s,
             R"([""])"s,
             R"(["a"])"s,
             R"([false])"s,
             R"([null, 1, "1", {}])"s,
             R"([null])"s,
             "[1\n]"s,
             R"( [1])"s,
             R"([1,null,null,null,2])"s,
             R"([2] )"s,
             R"([123e65])"s,
             R"([0e+1])"s,
             R"([0e1])"s,
             R"([ 4])"s,
             R"([-0.000000000000000000000000000000000000000000000000000000000000000000000000000001])"s,
             R"([20e1])"s,
             R"([-0])"s,
             R"([-123])"s,
             R"([-1])"s,
             R"([1E22])"s,
             R"([1E-2])"s,
             R"([1E+2])"s,
             R"([123e45])"s,
             R"([123.456e78])"s,
             R"([1e-2])"s,
             R"([123.456789])"s,
             R"([0.4e00669999999999999999999999999999999999999999999999999999999999999999999999999999999999999999999969999999006])"s,
             R"([-1e+9999, 1.5e+9999, 123123e100000, -123123123123123123123123123123, 100000000000000000000])"s,
             R"({"asd":"sdf", "dfg":"fgh"})"s,
             R"({"asd":"sdf"})"s,
             R"({"a":"b","a":"c"})"s,
             R"({"a":"b","a":"b"})"s,
             R"({})"s,
             R"({"":0})"s,
             R"({"foo\u0000bar": 42})"s,
             R"({ "min": -1.0e+28, "max": 1.0e+28 })"s,
             R"({"x":[{"id": "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"}], "id": "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"})"s,
             R"({"a":[]})"s,
             R"({"title":"\u041f\u043e\u043b\u0442\u043e\u0440\u0430"})"s,
             "{\n\"a\": \"b\"\n}"s,
             R"(["\u0060\u012a\u12AB"])"s,
             R"(["\uD801\udc37"])"s,
             R"(["\ud83d\ude39\ud83d\udc8d"])"s,
             R"(["\"\\\/\b\f\n\r\t"])"s,
             R"(["\\u0000"])"s,
             R"(["\""])"s,
             R"(["a/*b*/c/*d//e"])"s,
             R"(["\\a"])"s,
             R"(["\\n"])"s,
             R"(["\u0012"])"s,
             R"(["\uFFFF"])"s,
             R"( "asd")"s,
             R"(["\uDBFF\uDFFF"])"s,
             R"(["new\u00A0line"])"s,
             "[\"\xF4\x8F\xBF\xBF\"]"s,
             "[\"\xEF\xBF\xBF\"]"s,
             R"(["\u0000"])"s,
             R"(["\u002c"])"s,
             "[\"\xCF\x80\"]"s,
             "[\"\xF0\x9B\xBF\xBF\"]"s,
             R"(["asd "])"s,
             R"(" ")"s,
             R"(["\uD834\uDd1e"])"s,
             R"(["\u0821"])"s,
             R"(["\u0123"])"s,
             "[\"\xE2\x80\xA8\"]"s,
             "[\"\xE2\x80\xA9\"]"s,
             R"(["\u0061\u30af\u30EA\u30b9"])"s,
             "[\"new\x7Fline\"]"s,
             R"(["\uA66D"])"s,
             R"(["\u005C"])"s,
             "[\"\xE2\x8D\x82\xE3\x88\xB4\xE2\x8D\x82\"]"s,
             R"(["\u0022"])"s,
             R"(["\u200B\u2064\uFDD0\uFFFE\uDBFF\uDFFE\uD83F\uDFFE"])"s,
             R"(["aa"])"s,
             R"(false)"s,
             R"(42)"s,
             R"(-0.1)"s,
             R"(null)"s,
             R"("asd")"s,
             R"(true)"s,
             R"("")"s,
             "[\"a\"]\n"s,
             R"([true])"s,
             " [] "s,
             "\t\r\n[\t1\r,\n2 ]"s,
         }) {
        EXPECT_EQ(parse(text), 0) << text;
    }
}

TEST(JsonText, IsRefused) {
    for (const std::string& text : {
             R"([1 true])"s,
             "[a\xE5]"s,
             R"(["": 1])"s,
             R"([""],)"s,
             R"([,1])"s,
             R"([1,,2])"s,
             R"(["x",,])"s,
             R"(["x"]])"s,
             R"(["",])"s,
             R"(["x")"s,
             R"([x)"s,
             R"([3[4]])"s,
             "[\xFF]"s,
             R"([1:2])"s,
             R"([,])"s,
             R"([-])"s,
             R"([   , ""])"s,
             "[\"a\",\n4\n,1,"s,
             R"([1,])"s,
             "[\"\x0B\x61\"\\f]"s,
             R"([*])"s,
             R"([""})"s,
             R"(["")"s,
             R"([1,)"s,
             "[1,\n1\n,1"s,
             R"([{})"s,
             R"([fals])"s,
             R"([nul])"s,
             R"([tru])"s,
             R"([nulll])"s,
             R"([True])"s,
             "123\0"s,
             R"([++1234])"s,
             R"([+1])"s,
             R"([+Inf])"s,
             R"([-01])"s,
             R"([-1.0.])"s,
             R"([-2.])"s,
             R"([-NaN])"s,
             R"([.-1])"s,
             R"([.2e-3])"s,
             R"([0.1.2])"s,
             R"([0.3e+])"s,
             R"([0.3e])"s,
             R"([0.e1])"s,
             R"([0e+])"s,
             R"([0e])"s,
             R"([1.0e+])"s,
             R"([1.0e-])"s,
             R"([1.0e])"s,
             R"([1 000.0])"s,
             R"([1eE2])"s,
             R"([2.e+3])"s,
             R"([2.e-3])"s,
             R"([2.e3])"s,
             R"([9.e+])"s,
             R"([Inf])"s,
             R"([NaN])"s,
             "[\xEF\xBC\x91]"s,
             R"([1+2])"s,
             R"([0x1])"s,
             R"([0x42])"s,
             R"([Infinity])"s,
             "[0\xE5]"s,
             R"([-Infinity])"s,
             R"([-foo])"s,
             R"([- 1])"s,
             R"([-012])"s,
             R"([-.123])"s,
             R"([-1x])"s,
             R"([1ea])"s,
             "[1e1\xE5]"s,
             R"([1.])"s,
             R"([.123])"s,
             R"([1.2a-3])"s,
             R"([1.8011670033376514H-308])"s,
             R"([012])"s,
             R"(["x", truth])"s,
             R"({[: "x"})"s,
             R"({"x", null})"s,
             R"({"x"::"b"})"s,
             R"({"a":"a" 123})"s,
             R"({key: 'value'})"s,
             "{\"\xB9\":\"0\",}"s,
             R"({"a" b})"s,
             R"({:"b"})"s,
             R"({"a" "b"})"s,
             R"({"a":)"s,
             R"({"a")"s,
             R"({1:1})"s,
             R"({9999E9999:1})"s,
             R"({null:null,null:null})"s,
             R"({"id":0,,,,,})"s,
             R"({'a':0})"s,
             R"({"id":0,})"s,
             R"({"a":"b"}/**/)"s,
             R"({"a":"b"}/**//)"s,
             R"({"a":"b"}//)"s,
             R"({"a":"b",,"c":"d"})"s,
             R"({a: "b"})"s,
             R"({"a":"a)"s,
             R"({ "foo" : "bar", "a" })"s,
             R"({"a":"b"}#)"s,
             " "s,
             ""s,
             R"(["\uD800\"])"s,
             R"(["\uD800\u"])"s,
             R"(["\uD800\u1"])"s,
             R"(["\uD800\u1x"])"s,
             R"(["\uDADA"])"s,
             R"(["\uD888\u1234"])"s,
             R"(["\uDd1ea"])"s,
             R"(["\uDC00"])"s,
             "[\xC3\xA9]"s,
             "[\"\\\0\"]"s,
             "[\"\\x00\"]"s,
             R"(["\\\"])"s,
             "[\"\\\t\"]"s,
             "[\"\\\xF0\x9F\x8C\x80\"]"s,
             R"(["\"])"s,
             R"(["\u00A"])"s,
             R"(["\uD834\uDd"])"s,
             R"(["\a"])"s,
             R"(["\uqqqq"])"s,
             "[\"\\\xE5\"]"s,
             "[\"\\u\xE5\"]"s,
             R"([\u0020"asd"])"s,
             R"([\n])"s,
             R"(")"s,
             R"(['single quote'])"s,
             R"(abc)"s,
             R"(["\)"s,
             "[\"a\0a\"]"s,
             "[\"new\nline\"]"s,
             "[\"\t\"]"s,
             R"("\UA66D")"s,
             R"(""x)"s,
             R"("x"1)"s,
             R"(1"x")"s,
             "\xEF\xBB\xBF[]"s,
             R"(<.>)"s,
             R"([<null>])"s,
             R"([1]x)"s,
             R"([1]])"s,
             R"(["asd])"s,
             R"(aå)"s,
             R"([True])"s,
             R"(1])"s,
             R"({"x": true,)"s,
             R"([][])"s,
             R"(])"s,
             "\xEF\xBB{}"s,
             "\xE5"s,
             R"([)"s,
             "[1]\0"s,
             R"(2@)"s,
             R"({}})"s,
             R"({"":)"s,
             R"({"a":/*comment*/"b"})"s,
             R"({"a": true} "x")"s,
             R"(['])"s,
             R"([,)"s,
             R"([{)"s,
             R"(["a)"s,
             R"(["a")"s,
             R"({)"s,
             R"({])"s,
             R"({,)"s,
             R"({[)"s,
             R"({"a)"s,
             R"({'a')"s,
             R"(["\{["\{["\{["\{)"s,
             "*"s,
             R"({"a":"b"}#{})"s,
             R"([\u000A""])"s,
             "[1"s,
             R"([ false, nul)"s,
             R"([ true, fals)"s,
             R"({"asd":"asd")"s,
             "[\xC2\xA0]"s,
             "[\x0C]"s,
             "[\xE2\x81\xA0]"s,
             // UTF-8 that is none
             "[\"\xE6\x97\xA5\xD1\x88\xFA\"]"s,
             "[\"\xFF\"]"s,
             "[\"\xED\xA0\x80\"]"s,
             "[\"\xC0\xAF\"]"s,
             "[\"\xF4\xBF\xBF\xBF\"]"s,
             "[\"\xE0\xFF\"]"s,
             "[\"\x81\"]"s,
             "[\"\xFC\x83\xBF\xBF\xBF\xBF\"]"s,
             "\xFF\xFE[\0\"\0\xE9\0\"\0]\0"s,
         }) {
        EXPECT_EQ(parse(text), JSON_INVALID_TEXT) << text;
    }
}

TEST(JsonText, EndsInAnErrorWhereItIsTooDeep) {
    const auto nested = [](std::size_t levels, const std::string& open, const std::string& close) {
        std::string text;
        for (std::size_t i = 0; i < levels; ++i) {
            text.append(open);
        }
        text.append("1");
        for (std::size_t i = 0; i < levels; ++i) {
            text.append(close);
        }
        return text;
    };
    EXPECT_EQ(parse(nested(JSON_MOST_LEVELS, "[", "]")), 0);
    for (const std::size_t levels : {std::size_t{JSON_MOST_LEVELS} + 1, std::size_t{100'000}}) {
        EXPECT_EQ(parse(nested(levels, "[", "]")), JSON_TOO_DEEP);
        EXPECT_EQ(parse(nested(levels, "{\"a\":", "}")), JSON_TOO_DEEP);
        EXPECT_EQ(parse(nested(levels, "[", "")), JSON_TOO_DEEP);
    }
    EXPECT_EQ(query(nested(JSON_MOST_LEVELS, "[", "]"), "$[0][0].size()"), "[1]");
}

TEST(JsonText, MayBeLong) {
    std::string text = "[";
    for (int i = 0; i < 1'000'000; ++i) {
        text.append(i == 0 ? "" : ",").append(std::to_string(i));
    }
    EXPECT_EQ(query(std::string(text).append("]"), "$[last]"), "[999999]");
    EXPECT_EQ(parse(text), JSON_INVALID_TEXT);
    EXPECT_EQ(query(std::string("\"").append(10'000'000, 'x').append("\""), "$.size()"), "[1]");
}

// ---- paths ---------------------------------------------------------------------------------------------------------

TEST(JsonPath, GivesWhatPostgresqlGives) {
    std::ifstream table(POSTGRESQL_CASES);
    int cases = 0;
    for (std::string line; std::getline(table, line); ++cases) {
        const std::size_t first = line.find('\t');
        const std::size_t second = line.find('\t', first + 1);
        const std::string expected = line.substr(second + 1);
        const std::string given = query(line.substr(0, first), line.substr(first + 1, second - first - 1));
        const bool is_error = given == std::to_string(JSON_NO_SUCH_PART) || given == std::to_string(JSON_WRONG_OPERAND);
        const bool is_no_path = given.starts_with('@');
        EXPECT_EQ(is_error ? "error" : is_no_path ? "syntax" : given == std::to_string(JSON_NO_ITEM) ? "[]" : given, expected) << line;
    }
    EXPECT_GT(cases, 1000);
}

struct path_case {
    const char* document;
    const char* path;
    const char* result;
};

// What the table does not show: escapes, long numbers, members of one name, what is written between.
TEST(JsonPath, Cases) {
    for (const path_case& the : std::initializer_list<path_case>{
             {R"({"a":1,"a":2})", "$.a", "[2]"},
             {R"({"a":1,"a":2})", "$.*", "[1,2]"},
             {R"({"a\u0062":1, "a\"":2})", R"($."\u0061b")", "[1]"},
             {R"({"a\u0062":1, "a\"":2})", R"($."a\"")", "[2]"},
             {R"({"é":1, "$x":2, "a b":3})", R"($.é)", "[1]"},
             {R"({"é":1, "$x":2, "a b":3})", R"($.$x)", "[2]"},
             {R"({"é":1, "$x":2, "a b":3})", R"( $ . "a b" )", "[3]"},
             {R"({"type":1, "last":2, "exists":3})", R"($.type)", "[1]"},
             {R"({"type":1, "last":2, "exists":3})", R"($.*?(@==2||@==3))", "[2,3]"},
             {R"(["\ud83d\ude39", "\uffff", "z"])", R"($[*] ? (@ > "\uffff"))", R"(["\ud83d\ude39"])"},
             {R"(["a\tb"])", R"($[*] ? (@ starts with "a\u0009"))", R"(["a\tb"])"},
             {R"([ 1.10 , 1e2 , { "a" : [ ] } , "x y" ])", "$", R"([[1.10,1e2,{"a":[]},"x y"]])"},
             {R"([0.1, 1e-1, 100000000000000000000000000000000000000000.1e-42])", "$[*] ? (@ == 0.1)", R"([0.1,1e-1])"},
             {R"([1e400, -1e400])", "$[*] ? (@ > 1e399)", "[1e400]"},
             {R"([0, -0, 0.00, 0e9])", "$[*] ? (@ == 0)", "[0,-0,0.00,0e9]"},
             {R"(["1.5", 1e400])", "$[0].double()", "[1.5]"},
             {R"(["1.5", 1e400])", "$[1].double()", "-7107"},
             {R"(["1.5", 1e-400])", "$[1].double()", "[1e-400]"},
             {R"([])", "strict $[0]", "-7103"},
             {R"([])", "$[0]", "-7104"},
             // what is no path
             {"1", "", "@0"},
             {"1", "a", "@0"},
             {"1", "lax", "@3"},
             {"1", "laxx $", "@0"},
             {"1", "$ $", "@2"},
             {"1", "$.", "@2"},
             {"1", "$.1", "@2"},
             {"1", "$[", "@2"},
             {"1", "$[]", "@2"},
             {"1", "$[1", "@3"},
             {"1", "$[1,]", "@4"},
             {"1", "$[1 to]", "@6"},
             {"1", "$[lastx]", "@2"},
             {"1", "$[99999999999]", "-7107"},
             {"1", "$[03]", "@2"},
             {"1", "$[1to 2]", "@2"},
             {"1", "$[last x]", "@7"},
             {"1", "$.a.datetime()", "@12"},
             {"1", "last", "@0"},
             {"1", "@", "@0"},
             {"1", "$.type(1)", "@7"},
             {"1", "$.\"a", "@4"},
             {"1", "$.\"\\x\"", "@3"},
             {"1", "$ ? @ > 1", "@4"},
             {"1", "$ ? (@ > 1", "@10"},
             {"1", "$ ? (@ = 1)", "@7"},
             {"1", "$ ? (@)", "@6"},
             {"1", "$ ? (!@ > 1)", "@6"},
             {"1", "$ ? (@ > 1 &&)", "@13"},
             {"1", "$ ? (@ > 01)", "@9"},
             {"1", "$ ? (@ > 1 is unknown)", "@11"},
             {"1", "$ +", "@3"},
             {"1", "$ == \"\xD7\"", "@6"},
             {"1", "($ == 1) + 1", "@9"},
             {"1", "$ && true", "@2"},
             {"1", "$ ? (@ like_regex \"(\")", "@18"},
             {"1", "$ ? (@ like_regex \"a\" flag \"x\")", "@18"},
             {"1", "$ ? (@ starts with 1)", "@19"},
             {"1", "$.**{1 to}", "@9"},
             // beyond PostgreSQL 15, or what its table cannot show
             {"1", "lax$", "[1]"},
             {R"({"a":[1,{"b":2}]})", "$.keyvalue()", R"([{"id":0,"key":"a","value":[1,{"b":2}]}])"},
             {R"({"a":[1,{"b":2}]})", "$.a[1].keyvalue().id", "[6]"},
             {R"({"a":1})", "$.keyvalue().keyvalue()", "-7107"},
             {R"({"a":1})", "$.keyvalue().*", R"([0,"a",1])"},
             {R"(["1.5", " 2 ", 3.5, -3.5])", "$.integer()", "-7107"},
             {R"([" 2 ", 3.5, -3.5, 2147483647])", "$.integer()", "[2,4,-4,2147483647]"},
             {R"([2147483647.5])", "$.integer()", "-7107"},
             {R"([2147483647.5, "-9223372036854775808"])", "$.bigint()", "[2147483648,-9223372036854775808]"},
             {R"(["1.50", " 1e3 ", 7.0])", "$.number()", "[1.50,1000,7.0]"},
             {R"(["+.5", "1.", "\u0031\u0032", " 7\n"])", "$.double()", "[0.5,1,12,7]"},
             {R"(["1x"])", "$.double()", "-7107"},
             {R"(["inf"])", "$.double()", "-7107"},
             {R"([1.50, true, "a\n"])", "$[*].string()", R"(["1.50","true","a\n"])"},
             {R"([null])", "$[*].string()", "-7107"},
             {R"([0, 2, true, "T", "off", "1", "nO"])", "$[*].boolean()", "[false,true,true,true,false,true,false]"},
             {R"(["o"])", "$[*].boolean()", "-7107"},
             {R"([1.5])", "$[*].boolean()", "-7107"},
             {"[1, 8]", "$[1] / 3 * 3", "[8.0000000000000000000000000000000000001]"},
             {"[9, 0]", "$[0] / $[1]", "-7107"},
             {"[9, 0]", "$[0] % $[1]", "-7107"},
             {"1e400", "$ + 1", "-7107"},
             {R"(["a\nb"])", "$[*] ? (@ like_regex \"^b\" flag \"m\")", R"(["a\nb"])"},
             {R"(["a\nb"])", "$[*] ? (@ like_regex \"a.b\" flag \"s\")", R"(["a\nb"])"},
             {R"(["a.b", "axb"])", "$[*] ? (@ like_regex \"A.B\" flag \"qi\")", R"(["a.b"])"},
             {"1", R"("a\"\u0001\n")", R"(["a\"\u0001\n"])"},
         }) {
        EXPECT_EQ(query(the.document, the.path), the.result) << the.document << ' ' << the.path;
    }
    std::string deep = "@ > 1";
    for (int i = 0; i < 99; ++i) {
        deep = std::string("(").append(deep).append(")");
    }
    EXPECT_EQ(query("2", std::string("$ ? (").append(deep).append(")")), "[2]");
    EXPECT_EQ(query("2", std::string("$ ? ((").append(deep).append("))")), "@105");
    EXPECT_EQ(query("1", std::string("$").append(4000, ' ')), "@4000");
    std::string steps = "$";
    for (int i = 0; i < 64; ++i) {
        steps.append("[*]");
    }
    EXPECT_EQ(query("1", steps), "[1]");
    EXPECT_EQ(query("1", std::string(steps).append("[*]")), "@193");
}

// The ways to an item, of which there are more than 10^12, are not all gone.
TEST(JsonPath, ComesToAnItemInManyWays) {
    constexpr std::size_t levels = 1000;
    std::string deep;
    for (std::size_t i = 0; i < levels; ++i) {
        deep.append(R"({"a":[0],"b":)");
    }
    deep.append("1").append(levels, '}');
    for (const char* const path :
         {"$.**.**.**.**.x", "strict $.**.**.**.**.x", "(($.**).**.**).**.x", "$.**{0 to 900}.**{1 to last}.**{0 to 900}.**.x",
          "$ ? (@.**.**.**.** == 7)", "$ ? (exists(@.** ? (exists(@.** ? (exists(@.** ? (exists(@.** ? (@ == 2)))))))))",
          "$.**.**.**.** ? (@ == 2)"}) {
        EXPECT_EQ(query(deep, path), "-7104") << path;
    }
    EXPECT_EQ(query(deep, "$.**.**.**"), std::to_string(BIFUN_RESULT_TOO_LONG));
    std::string scalars = "$.type()";
    for (int i = 0; i < 40; ++i) {
        scalars.append("[0, 0]");
    }
    EXPECT_EQ(query("1", scalars + ".double()"), "-7107");
    EXPECT_EQ(query("1", scalars + " ? (@ == 1)"), "-7104");
}

TEST(JsonPath, IsWrapped) {
    EXPECT_EQ(query("[1, 2]", "$", JPATH_NO_WRAPPER), "[1,2]");
    EXPECT_EQ(query("[1, 2]", "$[*]", JPATH_NO_WRAPPER), "-7105");
    EXPECT_EQ(query("[1, 2]", "$[0]", JPATH_NO_WRAPPER), "1");
    EXPECT_EQ(query("[\"x\"]", "$[0].type()", JPATH_NO_WRAPPER), "\"string\"");
    EXPECT_EQ(query("[1, 2]", "$[*]", JPATH_CONDITIONAL_WRAPPER), "[1,2]");
    EXPECT_EQ(query("[1, 2]", "$[0]", JPATH_CONDITIONAL_WRAPPER), "1");
    EXPECT_EQ(query("[1, 2]", "$[0]", JPATH_WRAPPER), "[1]");
    EXPECT_EQ(query("[1, 2]", "$[2]", JPATH_WRAPPER), "-7104");
}

// ---- documents of several calls --------------------------------------------------------------------------------------

// What a call gives that asks all documents of a batch for a path.
std::string call(bifun_environment* environment, const std::vector<std::string>& documents, const std::string& path_text) {
    jpath* path = nullptr;
    EXPECT_EQ(jpath_parse(environment, reinterpret_cast<const std::uint8_t*>(path_text.data()),
                          static_cast<std::uint32_t>(path_text.size()), &path, nullptr),
              0);
    json_reader* const reader = json_open(environment);
    std::string all;
    for (const std::string& document : documents) {
        const exact_block text(document);
        const std::uint8_t* result = nullptr;
        std::uint32_t length = 0;
        std::int32_t status = json_parse(environment, reader, text.data(), text.length);
        status = status == 0 ? jpath_get_json(environment, reader, path, JPATH_NO_WRAPPER, &result, &length) : status;
        all.append(status == 0 ? std::string(reinterpret_cast<const char*>(result), length) : std::to_string(status)).append(" ");
    }
    json_close(environment, reader);
    jpath_free(environment, path);
    return all;
}

// Batches that begin alike, are alike up to a place, or are as long; shapes that differ in a token; more of them than are kept.
TEST(JsonDocuments, AreTheSameWhetherTheyAreKeptOrNot) {
    const std::int64_t before = zqengine::live_bytes();
    {
        bifun_environment environment;
        std::vector<std::vector<std::string>> batches;
        for (int i = 0; i < 12; ++i) {
            std::vector<std::string> batch = {i % 3 == 0 ? "{}" : "{\"a\":" + std::to_string(i) + "}", R"({"a":[1,2],"b":{"c":"x"}})"};
            for (int k = 0; k < 40; ++k) {
                const std::string number = std::to_string(k == 20 ? i : k);
                batch.push_back(k % 7 == i % 7 ? R"({"a":[1,2,"b":3})"
                                : k % 5 == 0   ? "{\"a\":\"" + number + "\",\"b\":{\"c\":true}}"
                                : k % 4 == 0   ? R"({"a\u0062":1,"b":null})"
                                               : "{\"a\":" + number + ",\"b\":{\"c\":[]}}");
            }
            batch.resize(static_cast<std::size_t>(42 - i % 2 * 10));
            batches.push_back(batch);
        }
        for (const int shift : {0, 1, 5}) {
            for (std::size_t i = 0; i < batches.size(); ++i) {
                for (const char* const path : {"$.a", "$.b.c", "$.ab", "$"}) {
                    // Another column's documents in between, more of them the more often.
                    const std::vector<std::string>& other = batches[(i + static_cast<std::size_t>(shift)) % batches.size()];
                    EXPECT_EQ(call(&environment, batches[i], path), call(nullptr, batches[i], path));
                    EXPECT_EQ(call(&environment, other, path), call(nullptr, other, path));
                }
            }
        }
        // Documents beyond the room that there is.
        std::vector<std::string> long_ones;
        for (int i = 0; i < 5; ++i) {
            long_ones.push_back("{\"a\":\"" + std::string(3'000'000, static_cast<char>('a' + i)) + "\",\"b\":" + std::to_string(i) + "}");
        }
        for (int repetition = 0; repetition < 3; ++repetition) {
            EXPECT_EQ(call(&environment, long_ones, "$.b"), "0 1 2 3 4 ");
        }
    }
    EXPECT_EQ(zqengine::live_bytes(), before);
}

// ---- character sets --------------------------------------------------------------------------------------------------

struct database_in {
    std::uint32_t before = zqengine::database_charset();
    explicit database_in(std::uint32_t charset) { zqengine::set_database_charset(charset); }
    database_in(const database_in&) = delete;
    database_in& operator=(const database_in&) = delete;
    ~database_in() { zqengine::set_database_charset(before); }
};

TEST(JsonCharset, IsThatOfTheDatabase) {
    {
        const database_in database(ZQ_CHARSET_GB18030);
        // The second byte of the one is a backslash, that of the other a bracket.
        EXPECT_EQ(query("{\"\x81\x5C\":[\"\x81\x5B\"]}", "$.\"\x81\x5C\""), "[[\"\x81\x5B\"]]");
        EXPECT_EQ(query("[\"\x81\x30\x81\x30\"]", "$[0]"), "[\"\x81\x30\x81\x30\"]");
        EXPECT_EQ(query("[\"\x90\x30\x81\x30x\"]", R"($[*] ? (@ starts with "\ud800\udc00"))"), "[\"\x90\x30\x81\x30x\"]");
        EXPECT_EQ(parse("[\"\x81\"]"), JSON_INVALID_TEXT);
        EXPECT_EQ(query("[1]", "$.\x81\x5C +"), "@6");
    }
    const database_in database(ZQ_CHARSET_EUC_KR);
    EXPECT_EQ(query("{\"\xB0\xA1\":\"\xB3\xAA\"}", "$.\xB0\xA1"), "[\"\xB3\xAA\"]");
    EXPECT_EQ(parse("[\"\xB0\"]"), JSON_INVALID_TEXT);
    EXPECT_EQ(query(R"(["\uac00", "\u00ff"])", "$[*] ? (@ == \"\xB0\xA1\")"), R"(["\uac00"])");
    EXPECT_EQ(query("1", R"("\uac00")"), "[\"\xB0\xA1\"]");
    EXPECT_EQ(query("[\"\xA2\xE6\"]", R"($[*] ? (@ == "\u20ac"))"), "[\"\xA2\xE6\"]");
    EXPECT_EQ(parse("[\"\xC9\xA1\"]"), JSON_INVALID_TEXT);
    EXPECT_EQ(parse("[\"\x81\x41\"]"), JSON_INVALID_TEXT);
    for (const char* const path : {R"("\u00ff")", R"("\uac02")", R"("\ue000")", R"("\u0080")"}) {
        EXPECT_EQ(query("1", path), std::to_string(JSON_NO_CHARACTER)) << path;
    }
}

TEST(JsonNumbers, AreComparedExactly) {
    // From the least on; those on a line are equal.
    const std::vector<std::vector<const char*>> order = {
        {"-1e99999999999999"},
        {"-10", "-1e1", "-100.0e-1"},
        {"-9.99"},
        {"-1e-500"},
        {"0", "-0", "0e5", "0.000"},
        {"1e-99999999999999"},
        {"0.01", "1e-2", "0.0100"},
        {"0.010000000000000000000000000000000000000000000000001"},
        {"1", "1.0", "10e-1", "0.1E+1"},
        {"9007199254740992"},
        {"9007199254740993", "9007199254740993.0"},
        {"1e99999999999999"},
    };
    for (std::size_t i = 0; i < order.size(); ++i) {
        for (std::size_t k = 0; k < order.size(); ++k) {
            for (const char* const a : order[i]) {
                for (const char* const b : order[k]) {
                    EXPECT_EQ(zqengine::compare_json_numbers(a, b), i < k ? -1 : i > k ? 1 : 0) << a << ' ' << b;
                }
            }
        }
    }
}

} // namespace
