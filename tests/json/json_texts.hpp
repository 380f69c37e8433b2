#pragma once

#include "support/Words.hpp"

#include <string>
#include <string_view>
#include <vector>

// Texts for the JSON reader. The bytes of strings, and of what stands in a list, are hexadecimal.
namespace KeloAPI::testing {

using namespace std::string_view_literals;

/// To be accepted.
inline std::vector<std::string> wellFormedTexts() {
    auto texts = wordsOf(R"x(
         {} [] [[]] [{}] {"a":{}} {"a":[]} [[],[]] [{},{}] [[[[[[[[[[]]]]]]]]]]
         {"a":{"b":{"c":{}}}} [1,2,3] {"a":1,"b":2} {"a":1,"a":2} {"":0} {"a":null}
         [null,true,false] {"a":[{"b":[{}]}]} [[1],{"a":2},"b",3,null]
         0 1 -1 "" "a" true false null 1.5
         [0] [-0] [0.0] [-0.0] [0e0] [0E+0] [1e0] [1E2] [1e+2] [1e-2] [1.5e10] [123456789]
         [-123] [0.1] [123.456e-7] [9223372036854775807] [-9223372036854775808]
         [9223372036854775808] [18446744073709551615] [1.7976931348623157e308]
         [-1.7976931348623157e308] [5e-324] [1e-400] [0.00000000000000000000001]
         [100000000000000000000.0] [1e22] [3.141592653589793238462643383279502884]
         [1e00000000000000000000001] [0e999999999]
         [18446744073709551616] [-9223372036854775809] [100000000000000000000]
         [-100000000000000000000] [1e309] [-1e309] [1e999999] [1.8e308] {"a":[1e400]}
         [""] ["abc"] ["\""] ["\\"] ["\/"] ["/"] ["\b\f\n\r\t"] ["\u0041"] ["\u00e4"]
         ["\u20AC"] ["\uD83D\uDE00"] ["\ud800\udc00"] ["\uDBFF\uDFFF"] ["\u0000"]
         ["\u001f"] ["\uFFFF"] ["\uFFFE"] ["\u2028\u2029"] ["{"] ["["] ["}],:"] ["/*c*/"]
         ["\\n"] ["\\\""] ["\\\\"] ["a\u0000b"] {"\u0061":1} {"\u0000":1}
         ["\uD800"] ["\uDBFF"] ["\uDC00"] ["\uDFFF"] ["\uD800\uD800"] ["\uDC00\uD800"]
         ["\uD800x"] ["\uD800\n"] ["\uD800\u0041"] ["\uD83D\uD83D\uDE00"] {"\uD800":1}
)x");
    for (const std::string_view text :
         {" {} "sv, "\t[\n]\r"sv, "[1 , 2\n,\t3]"sv, R"({ "a" : 1 , "b" : 2 })"sv,
          "\r\n{\r\n}\r\n"sv, " null "sv, R"({"a b":1})"sv}) {
        texts.emplace_back(text);
    }
    for (const std::string_view text :
         {"{\"\xC3\xA4\":1}"sv, "\xEF\xBB\xBF{}"sv, "\xEF\xBB\xBF[1]"sv, "\xEF\xBB\xBF 1"sv}) {
        texts.emplace_back(text);
    }
    for (const std::string& characters :
         wordsOf("20 7F C3A4 E282AC F09F9880 F48FBFBF EFBFBF ED9FBF EE8080 C280 E0A080 F0908080"
                 " EFBBBF E280A8")) {
        texts.push_back("[\"" + bytesOf(characters) + "\"]");
    }
    return texts;
}

/// To be refused.
inline std::vector<std::string> malformedTexts() {
    auto texts = wordsOf(R"x(
         { } [ ] [[] []] {}} {{} {{}} [} {] [1} {"a":1] [,] [1,] [,1] [1,,2] [1;2] [:]
         [1:2] ["a":1] {,} {"a"} {"a":} {"a",1} {"a":1,} {,"a":1} {"a":1,,"b":2} {"a"::1}
         {"a":1:2} {a:1} {'a':1} {1:1} {null:1} {true:1} {[]:1} {"a":1 {"a": {"a" {"a [1
         [1, ["a" ["a [[[[[[[[ {"a":{"b": [][ [][] {}{} [], {}, 1,2 "a""b" [1]x {}# , :
         "a":1 * <null>
         ['a'] [`a`] [undefined] (1)
         [nul] [nulll] [Null] [NULL] [tru] [truee] [True] [TRUE] [fals] [False] [nan] [NaN]
         [Infinity] [-Infinity] [inf] [nullnull] ["a"null] nul t nil
         [+1] [01] [00] [-01] [-] [--1] [+-1] [1.] [.5] [-.5] [1.e1] [1e] [1e+] [1e-] [1E]
         [1ee1] [1e1.5] [1.2.3] [1+2] [1-2] [0x1] [0x] [0b1] [1a] [1_000] [1,000.5.] [0e]
         [.] [e1] [1f] [2.e+3] - 01 1.
         1e400a 01e400 1e400.5 -01e400 1.e400 +1e400 --1e400 1e400-1 1e400"" true1e400
         018446744073709551616 18446744073709551616x 18446744073709551616[]
         [1e400a] [01e400] [1e400.5] [-01e400] [1.e400] [+1e400] [--1e400] [1e400-1] [1e400""]
         [true1e400] [018446744073709551616] [18446744073709551616x] [18446744073709551616[]]
         ["] ["\"] ["a] " "\ ["\\\"] ["\x41"] ["\a"] ["\v"] ["\0"] ["\'"] ["\U0041"] ["\u"]
         ["\u0"] ["\u00"] ["\u004"] ["\u004g"] ["\u-041"] ["\u+041"] ["\u{41}"]
         ["\uD800\"] ["\uD800\u"]
)x");
    for (const std::string_view text : {""sv,
                                        " "sv,
                                        "\n\t\r "sv,
                                        "[1 2]"sv,
                                        R"({"a" 1})"sv,
                                        R"({"a":1 "b":2})"sv,
                                        "1 2"sv,
                                        "null null"sv,
                                        "[\"a\",\n4\n,1,"sv,
                                        "[1,\f2]"sv,
                                        "[\v1]"sv,
                                        "\f[]"sv,
                                        "[true false]"sv,
                                        "[1 000]"sv,
                                        "[- 1]"sv,
                                        "{\"\n\":1}"sv,
                                        "1e400 1"sv,
                                        "[1e400 1]"sv,
                                        "18446744073709551616 0"sv,
                                        "[- 18446744073709551616]"sv}) {
        texts.emplace_back(text);
    }
    for (const std::string_view text :
         {"// c\n{}"sv, "{}// c"sv, "/* c */{}"sv, "[1/* c */]"sv, "# c\n{}"sv, R"(["\ "])"sv,
          "[\"\\\n\"]"sv, R"(["\u 041"])"sv}) {
        texts.emplace_back(text);
    }
    for (const std::string_view text :
         {"\xEF\xBB\xBF"sv, "\0"sv, "{}\0"sv, "[]\0[]"sv, "\xE2\x81\xA0[]"sv, "{\"a\0\":1}"sv,
          "{\"\xFF\":1}"sv, "\xFF"sv, "[1]\x80"sv, "\xC3\xA4"sv, "\xFF\xFE[\0]\0"sv,
          "\xFE\xFF\0[\0]"sv, "[\0]\0"sv, "\xEF\xBB[]"sv, "\xEF[]"sv, "[]\xEF\xBB\xBF"sv,
          "\xEF\xBB\xBF\xEF\xBB\xBF[]"sv, " \xEF\xBB\xBF[]"sv}) {
        texts.emplace_back(text);
    }
    for (const std::string& element : wordsOf("C2A0 E28083 EFBC91 3100 FF C3A4 EFBBBF")) {
        texts.push_back("[" + bytesOf(element) + "]");
    }
    for (const std::string& characters :
         wordsOf("0A 0D 09 08 01 1F 00 610062 80 BF C080 C1BF C2 C328"
                 " E08080 E09FBF E282 E228A1 EDA080 EDBFBF EDA0BDEDB880 F0808080 F08FBFBF F09F98"
                 " F4908080 F5808080 F888808080 FC8480808080 FE FF")) {
        texts.push_back("[\"" + bytesOf(characters) + "\"]");
    }
    return texts;
}

} // namespace KeloAPI::testing
