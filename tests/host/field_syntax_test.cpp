// SPDX-License-Identifier: Apache-2.0
// Quotes, escapes, NULLs and short rows as other programs write them. All ways of writing fields together are the fuzzer's.
#include <string>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

TEST(FieldSyntax, Quotes) {
    expect_read({
        {"t.csv", "a;b\n5\" pipe;\"x\n", {"--quote", "none"}, "a,b\n\"5\"\" pipe\",\"\"\"x\"\n"},
        {"t.tsv", "a\tb\n\"1\"\t\n", {"--quote", ""}, "a,b\n\"\"\"1\"\"\",\n"},
        {"t.csv", "a,'b,c'\n'it''s, so','2\n\"'\n'',3\n", {"--quote", "'"}, "a,\"b,c\"\n\"it's, so\",\"2\n\"\"\"\n\"\",3\n"},
        {"t.csv", "|a|;|b|\n|1|;|x||y|\n", {"--quote", "0x7C"}, "a,b\n1,x|y\n"}, // the bar cannot separate then
    });
    // Wherever the quote lies in what is scanned at once.
    for (const std::size_t length : {1U, 61U, 62U, 63U, 64U, 127U}) {
        const std::string text = repeated("x", length);
        expect_read({{"t.csv",
                      joined({"a,b\n", text, "\" y,\"z, \"\"\"\n1,5\" disk \"x\"\n"}),
                      {},
                      joined({"a,b\n\"", text, "\"\" y\",\"z, \"\"\"\n1,\"5\"\" disk \"\"x\"\"\"\n"})}});
    }
    expect_failure("a\n\"x\\\"y\"\n", "SELECT a FROM t",
                   "t.csv, line 2: text stands behind a closing quote; where \\\" is a \" inside a field, --escape '\\' says so");
    expect_failure("a,b\n1,2,3\n", "SELECT a FROM t",
                   "t.csv, line 2: the header has 2 fields and this row 3; a field that holds a comma stands in '...'", {"--quote", "'"});
    expect_failure("a\n", "SELECT a FROM t", "--quote: \"''\" is neither a character of one byte, ...", {"--quote", "''"});
    expect_failure("a\n", "SELECT a FROM t", "--delimiter and --quote are both \";\"", {"--quote", ";", "--delimiter", "semicolon"});
    expect_failure("a\n", "SELECT a FROM t", "--escape: in gb18030, \\ is also a part of characters",
                   {"--escape", "\\", "--set", "charset=gb18030"});
}

TEST(FieldSyntax, BlanksAroundQuotes) {
    expect_read({
        {"t.csv", "a, b\n1,  \"x, \"\"y\"\" \" \n\"\" , z \n", {}, "a,b\n1,\"x, \"\"y\"\" \"\n\"\", z \n"},
        {"t.txt", "a b\n\"x y\" \"z\"\n", {"--delimiter", "space"}, "a,b\nx y,z\n"},
    });
    expect_failure("a,b\n1, \"x\" y\n", "SELECT a FROM t", "t.csv, line 2: text stands behind a closing quote; ...");
}

TEST(FieldSyntax, Comments) {
    const arguments options = {"--comment", "#"};
    expect_read({
        {"t.csv", "# \"one\r\n#two;\r\na;b\r\n#3\r\n1;\"\n#x\"\r\n2;#\r\n# end", options, "a,b\n1,\"\n#x\"\n2,#\n"},
        {"t.csv", joined({repeated("# one\n", 30'000), "a\n1\n"}), options, "a\n1\n"},
        {"t.csv",
         "# one\na;b\n1;2\n3;4\n",
         {},
         "# one\na;b\n1;2\n3;4\n",
         "t.csv: the first line begins with # and has one field, and those behind it have fields that end with a semicolon; --comment '#' "
         "leaves out lines that begin so"},
        {"t.txt",
         "# v2\n# one\ntime | text\n1 | 2\n2 | 3 | 4\n",
         {"--skip", "1"},
         "# one\ntime | text\n1 | 2\n2 | 3 | 4\n",
         "t.txt: the first line begins with # and has one field, and those behind it have fields that end with a bar; --comment '#' "
         "leaves out lines that begin so"},
        {"t.csv", "#one\n#two\n#", {}, "#one\n#two\n#\n"},
        {"t.csv", "\n\na,b\n1,2\n3,4\n", {}, "a,b\n1,2\n3,4\n"},
        {"t.csv", "name\nSmith; John\nDoe; Jane\n", {}, "name\nSmith; John\nDoe; Jane\n"},
    });
    expect_failure("#\na\n1\n#\nx,y\n", "SELECT a FROM t", "t.csv, line 5: the header has 1 field and this row 2; ...", options);
    expect_failure("a,b\n1,2\n# x\n", "SELECT a FROM t",
                   "t.csv, line 3: the header has 2 fields and this row 1; --comment '#' leaves out lines that begin with it");
}

const arguments backslash = {"--escape", "\\"};

TEST(FieldSyntax, Escapes) {
    expect_read({
        {"t.csv", "a,b\n\"say \\\"x\\\", \\\\\",1\nx\\,y\\\nz\\tq,\\N\n\"\\N\",\"\\\"\n\"\n", backslash,
         "a,b\n\"say \"\"x\"\", \\\",1\n\"x,y\nz\\tq\",\n\\N,\"\"\"\n\"\n"},
        {"t.csv", "a,b\n\"x^\"\",\"^n^^\"\n", {"--escape", "^"}, "a,b\n\"x\"\"\",^n^\n"},
        {"t.csv", "a,b\n\"x\"\"y\",\\N\n", {"--escape", "\""}, "a,b\n\"x\"\"y\",\\N\n"},
        {"t.tsv",
         "1\t\\N\ta\\tb\\nc\\\\\\d\n2\t\t\"\n",
         {"--no-header", "--quote", "none", "--escape", "\\n", "--null", "\\N"},
         "column_1,column_2,column_3\n1,,\"a\tb\nc\\d\"\n2,\"\",\"\"\"\"\n"},
    });
}

TEST(FieldSyntax, Nulls) {
    const std::string file = "n,s\nNA,NA\n1,\n,x\n\"2\",\"NA\"\n\"\",\"\"\n";
    const arguments one = {"--format", "jsonl", "--null", "NA"};
    arguments both = one;
    both.insert(both.end(), {"--null", "", "--quoted-nulls"});
    arguments in_quotes = one;
    in_quotes.emplace_back("--quoted-nulls");
    expect_read({
        {"t.csv", file, {}, "n,s\nNA,NA\n1,\n,x\n2,NA\n\"\",\"\"\n"},
        {"t.csv", file, one,
         "{\"n\": null, \"s\": null}\n{\"n\": \"1\", \"s\": \"\"}\n{\"n\": \"\", \"s\": \"x\"}\n{\"n\": \"2\", \"s\": \"NA\"}\n"
         "{\"n\": \"\", \"s\": \"\"}\n"},
        {"t.csv", file, in_quotes,
         "{\"n\": null, \"s\": null}\n{\"n\": 1, \"s\": \"\"}\n{\"n\": null, \"s\": \"x\"}\n{\"n\": 2, \"s\": null}\n"
         "{\"n\": null, \"s\": \"\"}\n"},
        {"t.csv", file, both,
         "{\"n\": null, \"s\": null}\n{\"n\": 1, \"s\": null}\n{\"n\": null, \"s\": \"x\"}\n{\"n\": 2, \"s\": null}\n"
         "{\"n\": null, \"s\": null}\n"},
        {"t.csv", "d,x\n価, 価 \n2024-01-01,\n", {"--null", "価"}, "d,x\n,\n2024-01-01,\"\"\n"},
    });
    expect_failure("n\nNA\n", "SELECT n FROM t",
                   "t.csv, line 2, column n: \"NA\" is not of type INT; give the column another type with --types, such as n:VARCHAR; "
                   "--null 'NA' --null '' takes it and empty fields for NULL",
                   {"--types", "n:INT"});
    const scratch_directory directory;
    directory.write("t.csv", file);
    EXPECT_EQ(directory.run({"describe", "--null", "NA", "--quoted-nulls", "-"}, "out", "t.csv").out,
              "column,type,values,nulls,smallest,largest,text_line,text\nn,INT,2,3,1,2,,\ns,VARCHAR,3,2,\"\",x,4,x\n");
}

TEST(FieldSyntax, ShortRows) {
    const arguments filling = {"--fill-short-rows", "--batch-rows", "2"};
    arguments with_nulls = filling;
    with_nulls.insert(with_nulls.end(), {"--null", "NA"});
    arguments ignoring = filling;
    ignoring.emplace_back("--ignore-errors");
    const std::string file = "a,b,c\r\n1,x\r\n\r\n2\r\n3,\"y\"\r\n4,,5\r\n";
    expect_read({
        {"t.csv", file, filling, "a,b,c\n1,x,\n2,,\n3,y,\n4,,5\n"},
        {"t.csv", file, with_nulls, "a,b,c\n1,x,\n2,,\n3,y,\n4,\"\",5\n"}, // what is not there is NULL, whatever is written for it
        {"t.csv", "1\n2,3\n4", {"--fill-short-rows", "--no-header"}, "column_1,column_2\n1,\n2,3\n4,\n"},
        {"t.csv", "a,b\n1\n2,3,4\n5\n", ignoring, "a,b\n1,\n5,\n",
         "1 row left out; the first: t.csv, line 3: the header has 2 fields and this row 3; a field that holds a comma stands in double "
         "quotes"},
    });
    expect_failure("a,b\n1\n", "SELECT a FROM t",
                   "t.csv, line 2: the header has 2 fields and this row 1; --fill-short-rows has NULL for the rest of such rows");
    expect_answer("a,b\n1\n\"x\n\"\nLN\n0\n", "SELECT SQRT(CAST(a AS DECIMAL)) FROM t WHERE a <> 'x\n'", "", {"--fill-short-rows"},
                  "CAST: \"LN\" cannot be DECIMAL in row 3 (t.csv, line 5); ...");
    // More fields than the text of the rows had room for.
    std::string wide = "a";
    std::string rows;
    for (int i = 0; i < 500; ++i) {
        wide += joined({",c", std::to_string(i)});
        rows += joined({std::to_string(i), "\n"});
    }
    const scratch_directory directory;
    directory.write("t.csv", joined({wide, "\n", rows}));
    EXPECT_EQ(directory.run({"--fill-short-rows", "t.csv", "SELECT a FROM t WHERE c499 IS NULL"}).out, joined({"a\n", rows}));
}

} // namespace
