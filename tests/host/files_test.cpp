// SPDX-License-Identifier: Apache-2.0
// Files as they come: delimiters, headers, bad rows, and types that the beginning of a file does not tell.
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

TEST(Files, Delimiters) {
    expect_read({
        {"t.csv", "a;b\n1;2,5\n\"x;y\";3,5\n", {}, "a,b\n1,\"2,5\"\nx;y,\"3,5\"\n"},
        {"t.txt", "a|b\n1|,\n2|,\n", {}, "a,b\n1,\",\"\n2,\",\"\n"},
        {"t.csv", "a\tb,c\n1\t2\n", {}, "a,\"b,c\"\n1,2\n"},
        {"t.TSV", "a,b\n1,2\n", {}, "\"a,b\"\n\"1,2\"\n"},
        {"t.psv", "a,b|c\n", {}, "\"a,b\",c\n"},
        {"t.csv",
         "a;b,c\n\n1;2,5\n",
         {},
         "a;b,c\n1;2,5\n",
         "t.csv: fields are taken to end with a comma, though it could be a semicolon; --delimiter says which"},
        {"t.csv", "a;b,c\n1;2\n1;2\n", {}, "a,\"b,c\"\n1,2\n1,2\n"},
    });
    expect_read({
        {"t.tsv", "a,b\t\n1,2\n", {"--delimiter", "comma"}, "a,b\t\n1,2\n"},
        {"t.csv", "a b,\n1 2\n", {"--delimiter", "Space"}, "a,\"b,\"\n1,2\n"},
        {"t.csv", "a:b\n1:2\n", {"--delimiter", ":"}, "a,b\n1,2\n"},
        {"t.csv",
         "a\x01"
         "b\n1\x01"
         "2\n",
         {"--delimiter", "0x01"},
         "a,b\n1,2\n"},
        {"t.csv", "a,b\n1,2\n", {"--delimiter", "\\t"}, "\"a,b\"\n\"1,2\"\n"},
    });
    expect_read({
        {"t.csv", "a b\n1 2\n", {}, "a b\n1 2\n", "t.csv: each line is taken for one field; --delimiter space reads 2 fields"},
        {"t.txt", "r:x:0\nd:x:1\n", {}, "r:x:0\nd:x:1\n", "t.txt: each line is taken for one field; --delimiter colon reads 3 fields"},
        {"t.txt", "PID  CMD\n  1  a b\n", {}, "PID  CMD\n  1  a b\n"},
        {"t.txt",
         "PID  CMD\n  1  a\n",
         {},
         "PID  CMD\n  1  a\n",
         "t.txt: each line is taken for one field; where blanks align columns, tr -s ' ' < t.txt | bifun --delimiter space - reads them"},
        {"t.txt",
         "sum 12\n-rw 1  a b\n-r  20 c\n",
         {},
         "sum 12\n-rw 1  a b\n-r  20 c\n",
         "t.txt: each line is taken for one field; where blanks align columns, awk 'NF >= 3 {for (i = 1; i < 3; i++) {printf \"%s\\t\", "
         "$i; "
         "$i = \"\"} sub(/^ +/, \"\"); print}' t.txt | bifun --delimiter tab --quote none --no-header - reads 3, the last with its blanks"},
        {"t.txt",
         " a  | b \n-----+---\n 1  | x\n",
         {"--fill-short-rows"},
         "a,b\n-----+---,\n 1  , x\n",
         "t.txt: this is a table as programs print it; sed -E '/^[-+|: ]*$/d; /^\\([0-9]+ rows?\\)$/d; s/^ *\\| *//; s/ *\\| *$//; s/ *\\| "
         "*/|/g; s/^ +//' t.txt | bifun --delimiter bar - reads it"},
    });
    expect_failure("a\n", "SELECT 1 FROM t", "--delimiter: \"ab\" is none; there are comma, ...", {"--delimiter", "ab"});
    expect_failure("a\n", "SELECT 1 FROM t", "--delimiter: \"\"\" is none; ...", {"--delimiter", "\""});
    expect_failure("a\n", "SELECT 1 FROM t", "--delimiter: \"0x0A\" is none; ...", {"--delimiter", "0x0A"});
    expect_failure("a|b\n1|2|3\n", "SELECT 1 FROM t",
                   "t.csv, line 2: the header has 2 fields and this row 3; a field that holds a bar stands in double quotes",
                   {"--delimiter", "bar"});
}

TEST(Files, Logs) {
    const std::string log = "2024-01-01 10:00:00,123 INFO said \"x\" y\n2024-01-01 10:00:01,456 WARN a, b\n";
    expect_failure(log, "SELECT 1 FROM t",
                   "t.csv: this seems to be a log with commas before its milliseconds; with --no-header --quote none --delimiter 0x01 each "
                   "line is a text, for SUBSTR(column_1, 1, 19), and with --delimiter comma it has fields");
    expect_answer(log, "SELECT SUBSTR(column_1, 12, 8) AS t FROM t", "t\n10:00:00\n10:00:01\n",
                  {"--no-header", "--quote", "none", "--delimiter", "0x01"});
}

TEST(Files, HeadersAndSkippedLines) {
    expect_read({
        {"t.csv", "1,x\n2,y\n", {"--no-header"}, "column_1,column_2\n1,x\n2,y\n"},
        {"t.csv", "\n1,x\n", {"--no-header", "--skip", "1"}, "column_1,column_2\n1,x\n"},
        {"t.csv", "# \"one\r\n#\r\na,b\r\n1,2", {"--skip", "2"}, "a,b\n1,2\n"},
        {"t.csv", "a,a,,b,a_2,,a\n1,2,3,4,5,6,7\n", {}, "a,a_3,column_3,b,a_2,column_6,a_4\n1,2,3,4,5,6,7\n"},
        {"t.csv", ",column_1\n1,2\n", {}, "column_1_2,column_1\n1,2\n"},
        {"t.csv", "sep=;\r\na ; b\r\n1, 5;2\r\n", {"--sample", "all"}, "a,b\n\"1, 5\",2\n"},
        {"t.csv", "sep=ab\n1\n", {}, "sep=ab\n1\n"},
    });
    expect_failure("a\n1\n", "SELECT 1 FROM t", "t.csv: --skip 2 leaves nothing of the file, which has 2 lines", {"--skip", "2"});
    expect_failure("a\n\n1", "SELECT 1 FROM t", "t.csv: --skip 1000000000000 leaves nothing of the file, which has 3 lines",
                   {"--skip", "1000000000000"});
    expect_failure("a\n1\n", "SELECT 1 FROM t", "--skip: \"-1\" is no number of lines, such as 2; see bifun --help", {"--skip", "-1"});
    expect_failure("#\na\n1,2\n", "SELECT 1 FROM t", "t.csv, line 3: the header has 1 field ...", {"--skip", "1"});
    const std::string unnamed = "#\n\"a\nb\",c\n\"1\",2,x\n\n\"2\",3,y\n";
    expect_failure(unnamed, "SELECT 1 FROM t",
                   "t.csv, line 4: the header has 2 fields and this row 3; a field that holds a comma stands in double quotes; as the rows "
                   "have one field more, the first column may have no name, as R writes row names: --no-header --skip 3 reads them",
                   {"--comment", "#", "--delimiter", "comma"});
    expect_read({{"t.csv", unnamed, {"--no-header", "--skip", "3"}, "column_1,column_2,column_3\n1,2,x\n2,3,y\n"}});
    const std::pair<std::string, std::string> others[] = {
        {"a,b\n1,2,3\n1,2,3\n1,2\n", "2: the header has 2 fields and this row 3"},
        {"a,b\n1,2\n1,2,3\n1,2,3\n", "3: the header has 2 fields and this row 3"},
        {"a,b\n1,2,3,4\n1,2,3,4\n", "2: the header has 2 fields and this row 4"},
        {"a,b\nx,y,z\nx,y,z\n1,2\n", "2: the header has 2 fields and this row 3"},
    };
    for (const auto& [file, message] : others) {
        expect_failure(file, "SELECT 1 FROM t", joined({"t.csv, line ", message, "; a field that holds a comma stands in double quotes"}));
    }
    expect_failure(
        "a;b\n\nd;n;t\n01.02.2024;-1,5;x\n1;2;3\n", "SELECT 1 FROM t",
        "t.csv, line 3: the header has 2 fields and this row 3; if this line names the columns, --skip 2 leaves out those before it");
    expect_failure("a,b\n1,2,\n3,4,\n", "SELECT 1 FROM t",
                   "t.csv, line 2: the header has 2 fields and this row 3; where all rows end with a comma, sed 's/,$//' t.csv | bifun - "
                   "\"SELECT ...\" takes it away");
    for (const auto& [title, fields] :
         {std::pair("Report\n\n", "1 field"), {"Report,2024\nof,me\n", "2 fields"}, {"a,b,c,d\n\n", "4 fields"}}) {
        expect_failure(joined({title, "id,name,x\n1,a,\n2,b,3\n"}), "SELECT 1 FROM t",
                       joined({"t.csv, line 3: the header has ", fields,
                               " and this row 3; if this line names the columns, --skip 2 leaves out those before it"}),
                       {"--delimiter", ","});
    }
    expect_failure("1,2\n3\n", "SELECT 1 FROM t", "t.csv, line 2: the first row has 2 fields and this row 1; ...", {"--no-header"});
    expect_failure(
        "1,2\n3,4,5\n", "SELECT 1 FROM t",
        "t.csv, line 2: the first row has 2 fields and this row 3; --fill-short-rows gives all rows as many fields as the longest of the "
        "first ones has",
        {"--no-header"});
    expect_failure("id,x,y\n1,a,b\n(1 row)\n", "SELECT 1 FROM t",
                   "t.csv, line 3: the header has 3 fields and this row 1; it counts the rows, and --ignore-errors leaves it out");
    expect_failure("id,x\n1,'a'\n2,'b, c'\n", "SELECT 1 FROM t",
                   "t.csv, line 3: the header has 2 fields and this row 3; where fields stand in '...', --quote \"'\" says so");
    expect_failure("a,b\n1,2\n#,\"b\" c\n", "SELECT 1 FROM t",
                   "t.csv, line 3: text stands behind a closing quote; --comment '#' leaves out lines that begin with it");
}

TEST(Files, TitlesWithAllDelimitersAreNoHeader) {
    for (const auto& [title, end] : {std::pair("Statement;;;\nAccount:;DE89;;\n\n;;;\n", "line 5 names them, --skip 4"),
                                     {";;x;\n;;;\n", "line 3 names them, --skip 2"}}) {
        expect_notices(joined({title, "Day;Value;Text;Amount\n\n01.02.2024;02.02.2024;a;-1,50\n02.02.2024;;b;2,00\n"}),
                       "SELECT 1 AS n FROM t LIMIT 1", "n\n1\n",
                       {joined({"t.csv: most columns have no name in the header; if ", end, " leaves out those before it"})});
    }
    for (const std::string file : {",x\na,b\nc,1\n", "a,,\n1,2,3\nx,y,z\n4,5,6\n", "a,,\nx,y,\n1,2,3\n", "a,,\nx,y,z\nx,y,z\n"}) {
        expect_notices(file, "SELECT 1 AS n FROM t LIMIT 1", "n\n1\n", {});
    }
}

TEST(Files, BadRowsAreLeftOut) {
    const auto left_out = [](const std::string& count, const std::string& reason) {
        return joined({count, " left out; the first: t.csv, line ", reason});
    };
    const std::string fields = "the header has 2 fields and this row ";
    const std::string end = "; --fill-short-rows has NULL for the rest of such rows";
    const std::string quotes = "text stands behind a closing quote; write a field with quotes as \"...\" with each quote inside doubled; "
                               "--quote none reads files in which quotes are text";
    const arguments ignoring = {"--ignore-errors"};
    const arguments typed = {"--ignore-errors", "--types", "a:INT,b:DATE", "--batch-rows", "3"};
    expect_read({
        {"t.csv", "a,b\n1,2\n3\n4,5,6\n7,8\n", ignoring, "a,b\n1,2\n7,8\n", left_out("2 rows", joined({"3: ", fields, "1", end}))},
        {"t.csv", "a,b\n1,\"x\ny\"\n3,\"x\"y\n4,5\n\"6\"6,7\n8,9\n", ignoring, "a,b\n1,\"x\ny\"\n4,5\n8,9\n",
         left_out("2 rows", joined({"4: ", quotes}))},
        {"t.csv", "a,b\n1,2\n3,\"x\n4,5\n", ignoring, "a,b\n1,2\n4,5\n",
         left_out("1 row",
                  "3: the row that begins here has a quote that is never closed; --quote none reads files in which quotes are text")},
        {"t.csv", "a,b\n1,2024-01-01\nx,y\n2,2024-02-30\n3,\n4,2024-01-02\nz,2024-01-03\n", typed, "a,b\n1,2024-01-01\n3,\n4,2024-01-02\n",
         left_out("3 rows", "3, column a: \"x\" is not of type INT; give the column another type with --types, such as a:VARCHAR")},
    });
    // The lowest row is the one named, whatever the order of the columns.
    expect_failure("a,b\n1,2024-01-01\n2,x\ny,2024-01-01\n", "SELECT * FROM t", "t.csv, line 3, column b: \"x\" is not of type DATE; ...",
                   {"--types", "a:INT,b:DATE"});
}

TEST(Files, TableNames) {
    const std::pair<std::string, std::string> names[] = {
        {"2024 sales-eu.csv", "_2024_sales_eu"},   {"order.csv", "order_"}, {"Größe.tsv", "größe"}, {"a.b.csv", "a_b"}, {"x.csv.gz", "x"},
        {"2024 sales-eu.csv", "\"2024 sales-eu\""}};
    for (const auto& [file, name] : names) {
        const scratch_directory directory;
        directory.write(file, "n\n1\n");
        EXPECT_EQ(directory.run({file, joined({"SELECT n FROM ", name})}).out, "n\n1\n") << name;
    }
    const scratch_directory directory;
    directory.write("my-file.csv", "n,order,last name,GRÖSSE\n1,2,3,4\n");
    const std::pair<std::string, std::string> refused[] = {
        {"SELECT n FROM my_file WHERE n =", "32: syntax error at end of input"},
        {"SELECT order FROM my_file", "14: syntax error at or near \"FROM\"; the column order of my-file.csv is written \"order\""},
        {"SELECT n FROM my_file WHERE last name = 3",
         "34: syntax error at or near \"name\"; the column last name of my-file.csv is written \"last name\""},
        {"SELECT last name FROM my_file", "8, near last: my-file.csv has no column last; the column last name is written \"last name\""},
        {"SELECT `order` FROM my_file",
         "9: syntax error at or near \"order\"; names of columns that are no words, or reserved ones, stand in double "
         "quotes; the column order of my-file.csv is written \"order\""},
        {"SELECT Zzz9 FROM my_file", "8, near Zzz9: my-file.csv has no column Zzz9; there are n, \"order\", \"last name\", GRÖSSE"},
        {"SELECT n FROM my_file WHERE n = \"zzz\"",
         "33, near \"zzz\": my-file.csv has no column zzz; a text stands in single quotes: 'zzz'"},
        {"SELECT GRÖSSER FROM my_file", "8, near GRÖSSER: my-file.csv has no column GRÖSSER; did you mean GRÖSSE?"},
        {"SELECT user FROM my_file",
         "8, near user: this value is not supported; there are CURRENT_DATE, CURRENT_TIME, CURRENT_TIMESTAMP, LOCALTIME and "
         "LOCALTIMESTAMP, and a column of this name stands in double quotes"},
    };
    for (const auto& [sql, message] : refused) {
        EXPECT_EQ(directory.run({"my-file.csv", sql}).err, joined({"bifun: SQL, character ", message, "\n"}));
    }
    EXPECT_EQ(directory.run({"my-file.csv", "SELECT n FROM my-file"}).err,
              "bifun: SQL, character 17: syntax error at or near \"-\"; my-file.csv is the table my_file\n");
    directory.write("2024-sales.csv", "Geb.,n\n2000,1\n");
    EXPECT_EQ(directory.run({"2024-sales.csv", "SELECT n FROM 2024_sales"}).err,
              "bifun: SQL, character 15: trailing junk after numeric literal at or near \"2024_\"; 2024-sales.csv is the table "
              "_2024_sales\n");
    EXPECT_EQ(directory.run({"2024-sales.csv", "SELECT Geb. FROM _2024_sales"}).err,
              "bifun: SQL, character 8: FROM behind a point is the name of a column; names with a point stand in double quotes; the column "
              "Geb. of 2024-sales.csv is written \"Geb.\"\n");
    EXPECT_EQ(directory.run({"my-file.csv", "SELECT n FROM my"}).err,
              "bifun: SQL, character 15, near my: there is no table my; the tables are my_file\n");
    EXPECT_EQ(directory.run({"my-file.csv"}).err,
              "bifun: there is no query behind my-file.csv; give one as in: bifun my-file.csv \"SELECT * FROM my_file\"\n");
}

// Texts of every kind at every place of a block, as the program itself writes them: they come out as they went in.
TEST(Files, TextsComeThroughWhole) {
    std::mt19937 random(20240229); // its numbers have 32 bits
    const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random()) % limit; };
    std::string file = "a,b,c\n";
    while (file.size() < 700000) {
        for (unsigned column = 0; column < 3; ++column) {
            const unsigned kind = below(8);
            std::string text;
            for (unsigned length = kind == 0 ? 0 : below(kind == 1 ? 300 : 20); length > 0; --length) {
                text += kind < 4 ? "\"\",\n\r;\t x"[below(9)] : static_cast<char>('a' + below(26));
            }
            const bool quoted = kind == 0 || text.find_first_of("\",\r\n") != std::string::npos;
            file += quoted ? joined({"\"", replaced(text, "\"", "\"\""), "\""}) : text;
            file += column == 2 ? '\n' : ',';
        }
    }
    const scratch_directory directory;
    directory.write("t.csv", file);
    const arguments options = {"--types", "a:VARCHAR,b:VARCHAR,c:VARCHAR"};
    const auto read = [&](arguments words, const std::string& input = {}) {
        words.insert(words.begin(), options.begin(), options.end());
        words.emplace_back(input.empty() ? "SELECT * FROM t" : "SELECT * FROM stdin");
        const run_result result = directory.run(words, "out", input);
        EXPECT_EQ(result.err, "");
        return result.out;
    };
    EXPECT_TRUE(read({"t.csv"}) == file);
    EXPECT_TRUE(read({"--batch-rows", "7", "t.csv"}) == file);
    EXPECT_TRUE(read({"-"}, "t.csv") == file);
}

TEST(Files, LineEnds) {
    for (const char* const line_end : {"\n", "\r\n", "\r"}) {
        std::string file = joined({"a,b", line_end});
        std::string rows = "a,b\n";
        for (int i = 0; i < 40000; ++i) {
            const std::string text(static_cast<std::size_t>(i % 67), 'x');
            file += joined({std::to_string(i), ",", text, line_end, i % 100 == 0 ? line_end : ""});
            rows += joined({std::to_string(i), ",", text, "\n"});
        }
        const scratch_directory directory;
        directory.write("t.csv", file);
        EXPECT_TRUE(directory.run({"t.csv", "SELECT * FROM t"}).out == rows) << testing::PrintToString(line_end);
        directory.write("t.csv", joined({file, "1,2,3"}));
        EXPECT_TRUE(directory.run({"t.csv", "SELECT * FROM t"}).err.starts_with("bifun: t.csv, line 40402: "));
    }
}

// ---- types that the beginning of a file does not tell ----------------------------------------------------------------

struct sampled_file {
    scratch_directory directory;

    // More than a megabyte of rows `first`, and then `last`.
    sampled_file(const std::string& first, const std::string& last) {
        std::string text = "a,b\n";
        while (text.size() < (std::size_t{3} << 19)) {
            text += joined({first, ",some text that fills the lines\n"});
        }
        directory.write("t.csv", joined({text, last, ",x\n"}));
    }
    [[nodiscard]] run_result run(const std::string& sql, const arguments& options = {"--sample", "1"},
                                 const std::string& input = {}) const {
        arguments words;
        words.insert(words.end(), options.begin(), options.end());
        words.insert(words.end(), {input.empty() ? "t.csv" : "-", replaced(sql, "FROM t", input.empty() ? "FROM t" : "FROM stdin")});
        return directory.run(words, "out", input);
    }
};

TEST(Files, TypesOfTheFirstPart) {
    struct late_value {
        std::string first, last, type, wider;
    };
    const late_value values[] = {
        {"1", "3000000000", "INT", "BIGINT"},
        {"1", "007", "INT", "VARCHAR"},
        {"1.5", "1e+3", "DECIMAL", "DOUBLE"},
        {"1.0e3", "12345678901234567.25", "DOUBLE", "VARCHAR"},
        {"2024-01-01", "2024-01-01 10:00", "DATE", "TIMESTAMP"},
        {"", "5", "NULL", "INT"},
        {"2024-01-01 10:00:00", "x", "TIMESTAMP", "VARCHAR"},
    };
    for (const auto& [first, last, type, wider] : values) {
        SCOPED_TRACE(last);
        const sampled_file file(first, last);
        // What has been written does not change any more.
        const run_result late = file.run("SELECT a, b FROM t");
        EXPECT_NE(late.err.find(joined({": \"", last, "\" is not of type ", type,
                                        ", which the rows at the beginning of the file gave; give the "
                                        "column its type with --types, such as a:",
                                        wider, ", or have the whole file decide with --sample all"})),
                  std::string::npos)
            << late.err;
        EXPECT_EQ(late.status, 1);
        // Before that, the whole file decides.
        const run_result early = file.run("SELECT a, b FROM t WHERE b = 'x'", {"--sample", "1", "--format", "json"});
        const bool quoted = wider == "VARCHAR" || wider == "TIMESTAMP";
        const std::string shown = last == "1e+3" ? "1000" : wider == "TIMESTAMP" ? "2024-01-01 10:00:00" : last;
        EXPECT_EQ(early.out, joined({"[\n  {\"a\": ", quoted ? "\"" : "", shown, quoted ? "\"" : "", ", \"b\": \"x\"}\n]\n"})) << early.err;
        EXPECT_EQ(file.run("SELECT a, b FROM t", {"--sample", "all"}).status, 0);
        EXPECT_EQ(file.run("SELECT a, b FROM t LIMIT 3").err, "");
        EXPECT_EQ(file.run("SELECT b FROM t").err, "");
        EXPECT_EQ(file.run("SELECT a, b FROM t WHERE b = 'x'", {"--sample", "1"}, "t.csv").status, 1); // a pipe is read once
        EXPECT_EQ(file.run("SELECT a, b FROM t WHERE b = 'x'", {"--sample", "all"}, "t.csv").err, "");
    }
    EXPECT_EQ(sampled_file("1", "-0").run("SELECT a FROM t").err, "");
    EXPECT_EQ(sampled_file("1e+03", "5").run("SELECT a FROM t").err, "");
    EXPECT_EQ(sampled_file("x", "5").run("SELECT a FROM t").err, "");
    EXPECT_EQ(sampled_file("2024-01-01 10:00", "2024-01-01").run("SELECT a FROM t").err, "");
    expect_failure("a\n1\n", "SELECT a FROM t", "--sample: \"x\" is no number of megabytes, such as 100, nor all", {"--sample", "x"});
}

} // namespace
