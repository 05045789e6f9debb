// SPDX-License-Identifier: Apache-2.0
// What files are packed and encoded in, what results are written as, and the descriptions of files.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <zlib.h>
#include <zstd.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

std::string gzipped(const std::string& text) {
    std::string packed(text.size() + 1000, '\0');
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data())); // zlib does not write to its input
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

std::string zstd_packed(const std::string& text) {
    std::string packed(ZSTD_compressBound(text.size()), '\0');
    packed.resize(ZSTD_compress(packed.data(), packed.size(), text.data(), text.size(), 1));
    return packed;
}

std::string converted_text(const std::string& text, const char* encoding, const char* from) {
    std::string converted(text.size() * 4 + 4, '\0');
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t length = ucnv_convert(encoding, from, converted.data(), static_cast<std::int32_t>(converted.size()), text.data(),
                                             static_cast<std::int32_t>(text.size()), &error);
    EXPECT_LE(error, U_ZERO_ERROR);
    converted.resize(static_cast<std::size_t>(length));
    return converted;
}

std::string encoded(const std::string& text, const char* encoding) { return converted_text(text, encoding, "UTF-8"); }
std::string encoded_from(const std::string& text, const char* encoding) { return converted_text(text, "UTF-8", encoding); }

// Larger than every buffer on the way.
std::string large_file(std::string_view text) {
    std::string file = "n,s\n";
    for (int i = 0; i < 40000; ++i) {
        file += joined({std::to_string(i), ",", text, std::to_string(i * 7919 % 10007), "\n"});
    }
    return file;
}

TEST(Outputs, WideCellsOfTablesStandInFull) {
    const std::string wide(500, 'x');
    const std::string rule(121, '-');
    expect_answer(joined({"a,b\n", wide, ",1\ny,2\n"}), "SELECT * FROM t",
                  joined({" a", std::string(119, ' '), " | b\n", rule, "-+---\n ", wide, " | 1\n y", std::string(119, ' '), " | 2\n"}),
                  {"--format", "table"});
}

TEST(Inputs, PackedFiles) {
    const std::string file = large_file("");
    const std::size_t half = file.size() / 2;
    const std::pair<std::string, std::string> packed_files[] = {
        {"t.csv.gz", gzipped(file)},
        {"t.csv", gzipped(file.substr(0, half)) + gzipped(file.substr(half))},
        {"t.csv.zst", zstd_packed(file)},
        {"t", zstd_packed(file.substr(0, half)) + zstd_packed("") + zstd_packed(file.substr(half))},
    };
    for (const auto& [name, packed] : packed_files) {
        SCOPED_TRACE(name);
        const scratch_directory directory;
        directory.write(name, packed);
        EXPECT_TRUE(directory.run({name, "SELECT * FROM t"}).out == file);
        EXPECT_TRUE(directory.run({"-", "SELECT * FROM stdin"}, "out", name).out == file);
        directory.write(name, packed.substr(0, packed.size() - 5));
        const run_result cut = directory.run({name, "SELECT * FROM t"});
        EXPECT_NE(cut.err.find(" data is damaged or cut off: it ends too early"), std::string::npos) << cut.err;
        EXPECT_EQ(cut.status, 1);
        directory.write(name, packed.substr(0, 20) + "damaged" + packed.substr(27));
        EXPECT_EQ(directory.run({name, "SELECT * FROM t"}).status, 1);
    }
}

TEST(Inputs, Encodings) {
    const std::string file = large_file("Größe é");
    const scratch_directory directory;
    const auto read = [&](const std::string& text, const arguments& options = {}) {
        directory.write("t.csv", text);
        arguments words = options;
        words.insert(words.end(), {"t.csv", "SELECT * FROM t"});
        return directory.run(words);
    };
    EXPECT_TRUE(read(encoded(file, "latin1"), {"--encoding", "Latin1"}).out == file);
    for (const char* const name : {"UTF-16LE", "UTF-16BE"}) {
        EXPECT_TRUE(read(encoded(file, name), {"--encoding", name}).out == file);
        EXPECT_TRUE(read(encoded(file, name)).out == file);
    }
    EXPECT_TRUE(read(joined({"\xFF\xFE", encoded(file, "UTF-16LE")})).out == file);
    EXPECT_TRUE(read(joined({"\xFE\xFF", encoded(file, "UTF-16BE")}), {"--encoding", "latin1"}).out == file);
    EXPECT_TRUE(read(joined({"\xEF\xBB\xBF", file})).out == file);
    EXPECT_TRUE(read(file, {"--encoding", "utf8"}).out == file);
    EXPECT_EQ(read(gzipped(encoded("n\n價\n", "Big5")), {"--encoding", "Big5"}).out, "n\n價\n");
    EXPECT_EQ(read(encoded("n\n한\n", "EUC-KR"), {"--set", "charset=euc-kr"}).out, encoded("n\n한\n", "EUC-KR"));
    EXPECT_EQ(read("\xEF\xBB\xBFn\n한\n", {"--set", "charset=euc-kr"}).out, encoded("n\n한\n", "EUC-KR"));

    // 0x7C is a bar, and half of a character of GB18030.
    EXPECT_EQ(read("\x81\x7C\n\x81\x7C\n", {"--set", "charset=gb18030"}).out, "\x81\x7C\n\x81\x7C\n");
    EXPECT_EQ(read("\x81\x7C|b\n1|2\n", {"--encoding", "gb18030"}).out, joined({encoded_from("\x81\x7C", "gb18030"), ",b\n1,2\n"}));
    EXPECT_EQ(read("a|b\n", {"--set", "charset=gb18030", "--delimiter", "bar"}).err,
              "bifun: --delimiter: in gb18030, bar is also a part of characters\n");
    EXPECT_EQ(read("é\xFE"
                   "b\n1\xFE"
                   "2\n",
                   {"--delimiter", "0xFE"})
                  .out,
              "é,b\n1,2\n");

    const std::string reason =
        "bytes that are no UTF-8, or a character that euc-kr does not have; name the file's encoding, as in --encoding windows-1252\n";
    EXPECT_EQ(read("n\n한\n\xFF\n", {"--set", "charset=euc-kr", "--encoding", "UTF-8"}).err, joined({"bifun: t.csv, line 3: ", reason}));
    EXPECT_EQ(read("n\n\xE0\xBC\x8B\n", {"--set", "charset=euc-kr", "--encoding", "UTF-8"}).err,
              joined({"bifun: t.csv, line 2: ", reason}));
    EXPECT_EQ(read("\xFF\xFEn").status, 1); // half a character
    // A fault far behind what has been converted at once.
    const std::string many = repeated("8,x\n", 30'000);
    const std::string faulty = encoded(joined({"n,m\n", many, "9,x\n"}), "UTF-16LE").append(std::string_view("1\0,\0\0\xDC\n\0", 8));
    EXPECT_EQ(
        read(faulty, {"--encoding", "UTF-16LE"}).err,
        "bifun: t.csv, line 30003: bytes that are no UTF-16LE, or a character that utf-8 does not have; name the file's encoding, as in "
        "--encoding windows-1252\n");
    const run_result ignoring = read(faulty, {"--encoding", "UTF-16LE", "--ignore-errors"});
    EXPECT_EQ(ignoring.out, joined({"n,m\n", many, "9,x\n"}));
    EXPECT_TRUE(ignoring.err.starts_with("bifun: 1 row left out; the first: t.csv, line 30003, column m: "));
    EXPECT_EQ(read("n\n", {"--encoding", "latin-none"}).err,
              "bifun: t.csv: there is no encoding latin-none; names are such as latin1, windows-1252, UTF-16 or Shift_JIS\n");
}

const std::string sample = "n,s\n1.5,\"a|b\tc\"\n,\"\"\n-2,\"x\"\"y\n\\\"\n";

TEST(Outputs, Formats) {
    const std::pair<std::string, std::string> formats[] = {
        {"csv", "n,s\n1.5,a|b\tc\n,\"\"\n-2,\"x\"\"y\n\\\"\n"},
        {"tsv", "n\ts\n1.5\t\"a|b\tc\"\n\t\"\"\n-2\t\"x\"\"y\n\\\"\n"},
        {"jsonl", "{\"n\": 1.5, \"s\": \"a|b\\tc\"}\n{\"n\": null, \"s\": \"\"}\n{\"n\": -2, \"s\": \"x\\\"y\\n\\\\\"}\n"},
        {"markdown", "| n | s |\n|---:|---|\n| 1.5 | a\\|b\\\\tc |\n| NULL |  |\n| -2 | x\"y\\\\n\\\\ |\n"},
    };
    for (const auto& [format, out] : formats) {
        expect_answer(sample, "SELECT * FROM t", out, {"--format", format});
    }
    expect_answer("n\n", "SELECT * FROM t", "", {"--format", "jsonl"});
    expect_answer("a|b\n", "SELECT * FROM t", "| a\\|b |\n|---|\n", {"--format", "markdown", "--delimiter", "comma"});
    expect_answer("a_b\n*s* <b> ~~x~~\n_a_ [x](y) `c` &lt; a & b\n", "SELECT * FROM t",
                  "| a_b |\n|---|\n| \\*s\\* \\<b> \\~\\~x\\~\\~ |\n| \\_a\\_ \\[x](y) \\`c\\` \\&lt; a & b |\n", {"--format", "markdown"});
    expect_failure("", "SELECT 1", "--format: there is no format xml; there are table, csv, tsv, json, jsonl and markdown",
                   {"--format", "xml"});
}

TEST(Outputs, FilesAreWrittenWholeOrNotAtAll) {
    const scratch_directory directory;
    const auto file_count = [&] {
        return std::distance(std::filesystem::directory_iterator(directory.path), std::filesystem::directory_iterator());
    };
    directory.write("t.csv", "n\n4\n-1\n");
    directory.write("old.tsv", "old");
    std::filesystem::permissions(directory.path / "old.tsv", std::filesystem::perms(0640));
    std::filesystem::create_symlink("old.tsv", directory.path / "link.tsv");
    EXPECT_EQ(directory.run({"--output", "new.json", "t.csv", "SELECT n FROM t"}).out, "");
    EXPECT_EQ(read_file(directory.path / "new.json"), "[\n  {\"n\": 4},\n  {\"n\": -1}\n]\n");
    const auto files = file_count();

    const run_result failed = directory.run({"--output", "old.tsv", "--batch-rows", "1", "t.csv", "SELECT SQRT(n) FROM t"});
    EXPECT_TRUE(failed.err.starts_with("bifun: SQRT: -6803 ")) << failed.err;
    EXPECT_EQ(read_file(directory.path / "old.tsv"), "old");
    EXPECT_EQ(directory.run({"--output", "none.csv", "t.csv", "SELECT SQRT(n) FROM t"}).status, 1);
    EXPECT_EQ(file_count(), files);

    EXPECT_EQ(directory.run({"--output", "link.tsv", "t.csv", "SELECT n, n m FROM t LIMIT 1"}).err, "");
    EXPECT_EQ(read_file(directory.path / "old.tsv"), "n\tm\n4\t4\n");
    EXPECT_EQ(std::filesystem::status(directory.path / "old.tsv").permissions(), std::filesystem::perms(0640));
    EXPECT_TRUE(std::filesystem::is_symlink(directory.path / "link.tsv"));
    // A file that is read is not replaced.
    std::filesystem::create_symlink("t.csv", directory.path / "other.csv");
    const std::string replaced_file = " and would be replaced by the result; give the result another name\n";
    EXPECT_EQ(directory.run({"--output", "t.csv", "t.csv", "SELECT n FROM t LIMIT 1"}).err,
              joined({"bifun: --output: t.csv is a file to be read,", replaced_file}));
    EXPECT_EQ(directory.run({"describe", "--output", "other.csv", "./t.csv"}).err,
              joined({"bifun: --output: other.csv is the file ./t.csv,", replaced_file}));
    const std::string by_input = joined({"cd '", directory.path.string(), "' && ! ", BIFUN_PROGRAM_COMMAND,
                                         " --output t.csv - 'SELECT * FROM stdin' < t.csv 2> /dev/null"});
    EXPECT_EQ(std::system(by_input.c_str()), 0);
    EXPECT_EQ(read_file(directory.path / "t.csv"), "n\n4\n-1\n");
    std::filesystem::remove(directory.path / "other.csv");
    EXPECT_EQ(file_count(), files);

    EXPECT_EQ(directory.run({"--output", "/dev/stdout", "--format", "csv", "t.csv", "SELECT n FROM t"}).out, "n\n4\n-1\n");
    EXPECT_EQ(directory.run({"--output", "none/x.csv", "SELECT 1"}).err,
              "bifun: none/x.csv cannot be written: No such file or directory\n");
    EXPECT_EQ(directory.run({"--output", "/dev/full", "SELECT 1"}).status, 1);

    // A program that is ended takes its temporary file along.
    const std::string command = joined({"cd '", directory.path.string(), "' && mkfifo p && (timeout -s TERM 1 ", BIFUN_PROGRAM_COMMAND,
                                        " --output new.csv - 'SELECT * FROM stdin' < p & (echo a; sleep 2) > p; wait)"});
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(file_count(), files + 1);
}

TEST(Outputs, AHyphenIsTheStandardOutput) {
    const scratch_directory directory;
    EXPECT_EQ(directory.run({"--output", "-", "SELECT 1 AS a"}).out, "a\n1\n");
    EXPECT_FALSE(std::filesystem::exists(directory.path / "-"));
}

TEST(Outputs, ValuesThatFitNoLongerStartAgain) {
    const scratch_directory directory;
    std::string file = "n,s\n";
    while (file.size() < (std::size_t{3} << 19)) {
        file += "1,some text that fills the lines\n";
    }
    file += "1.5,x\n";
    directory.write("t.csv", file);
    EXPECT_EQ(directory.run({"--sample", "1", "--output", "o.csv", "t.csv", "SELECT * FROM t"}).err, "");
    EXPECT_TRUE(read_file(directory.path / "o.csv") == file);
    // A file that comes as the standard input is read again too.
    const std::string query = "SELECT * FROM stdin WHERE s = 'x'";
    EXPECT_EQ(directory.run({"--sample", "1", "-", query}, "out <t.csv").out, "n,s\n1.5,x\n");
    EXPECT_EQ(directory.run({"--sample", "1", "-", query}, "out", "t.csv").status, 1);
}

TEST(Descriptions, Columns) {
    const scratch_directory directory;
    directory.write("t.csv", "n,big,e,day,moment,zoned,s,none,mixed\n"
                             "10,5,1e3,2024-02-29,2024-01-01,10:00+02:00,b,,1\n"
                             ",99999999999,-5,1999-12-31,2023-12-31 23:59:59,09:30 +01:00,\"a\n|\",,2\n"
                             "-9,,2,,,,\"\",,2024-01-01\n"
                             "9.50,7,1,2000-01-01,2024-01-01 00:00:01,09:00+00:00,c,,x\n");
    const std::string heading = "column,type,values,nulls,smallest,largest,text_line,text\n";
    EXPECT_EQ(directory.run({"describe", "t.csv"}).out,
              joined({heading, "n,DECIMAL,3,1,-9,10,,\n", "big,BIGINT,3,1,5,99999999999,,\n", "e,DOUBLE,4,0,-5,1e3,,\n",
                      "day,DATE,3,1,1999-12-31,2024-02-29,,\n", "moment,TIMESTAMP,3,1,2023-12-31 23:59:59,2024-01-01 00:00:01,,\n",
                      "zoned,TIME WITH TIME ZONE,3,1,10:00+02:00,09:00+00:00,,\n", "s,VARCHAR,4,0,\"\",c,2,b\n", "none,VARCHAR,0,4,,,,\n",
                      "mixed,VARCHAR,4,0,1,x,5,2024-01-01\n"}));
    EXPECT_EQ(
        directory.run({"describe", "--format", "markdown", "--no-header", "--skip", "5", "--output", "d.md", "-"}, "out", "t.csv").err, "");
    EXPECT_EQ(read_file(directory.path / "d.md").substr(0, 38), "| column | type | values | nulls | sma");
    directory.write("u.csv", "a\n1\n1,2\n\xFF\n" + std::string(50, 'x') + "\n");
    EXPECT_EQ(directory.run({"describe", "u.csv"}).err.substr(0, 24), "bifun: u.csv, line 3: th");
    const run_result result = directory.run({"describe", "--ignore-errors", "--format", "table", "u.csv"});
    EXPECT_NE(result.out.find("a      | VARCHAR |      3 |     0 | 1        | \xEF\xBF\xBD"), std::string::npos) << result.out;
    EXPECT_TRUE(result.err.starts_with("bifun: 1 row left out; the first: u.csv, line 3: ")) << result.err;
    EXPECT_TRUE(result.err.ends_with(
        "\nbifun: u.csv: there is text that is not valid utf-8; name the file's encoding, as in --encoding windows-1252\n"));
    EXPECT_EQ(directory.run({"describe"}).err, "bifun: FILE is required; see bifun --help\n");
}

TEST(Descriptions, GivenTypes) {
    const scratch_directory directory;
    std::string rows; // more than are read at a time
    for (int i = 0; i < 1500; ++i) {
        rows += "no,10.10.2024,10:00,9,\xD6\xD0\xCE\xC4,false,+1\n";
    }
    directory.write("t.csv", joined({"b,day,pause,n,s,flag,x\nYES,31.12.2023,9:30,1.50,ab,TRUE,5\n,01.01.2025,,10,,,-7\n", rows}));
    const arguments words = {"describe", "--set", "charset=gb18030", "--types",
                             "b:BOOL,t.day:DATE 'DD.MM.YYYY',pause:INTERVAL HOUR TO MINUTE,n:DECIMAL(8,2),s:VARCHAR(2),x:TINYINT"};
    const auto described = [&](const arguments& more) {
        arguments all = words;
        all.insert(all.end(), more.begin(), more.end());
        return directory.run(all);
    };
    const run_result result = described({"t.csv"});
    EXPECT_EQ(result.out,
              joined({"column,type,values,nulls,smallest,largest,text_line,text\n", "b,BOOL,1501,1,no,YES,,\n",
                      "day,DATE 'DD.MM.YYYY',1502,0,31.12.2023,01.01.2025,,\n", "pause,INTERVAL HOUR TO MINUTE,1501,1,9:30,10:00,,\n",
                      "n,\"DECIMAL(8, 2)\",1502,0,1.50,10,,\n", "s,VARCHAR(2),1501,1,ab,\xE4\xB8\xAD\xE6\x96\x87,,\n",
                      "flag,VARCHAR,1501,1,TRUE,false,2,TRUE\n", "x,TINYINT,1502,0,-7,5,,\n"}));
    EXPECT_EQ(result.err, "bifun: t.csv: truth values, dates and durations of this form are text unless their column is given its type, "
                          "with --types \"flag:BOOL\"\n");
    directory.write("d.csv", "a,b,c,d,e\n1.2.2024,1/13/2024,13-01-2024,1/2/2024,31.01.2024\n3.4.2024,2/1/2024,,2/1/2024,01.13.2024\n");
    directory.write("m.csv", "a,m\n1,\"1.234,56\"\n2,\"7\"\n");
    EXPECT_EQ(directory.run({"describe", "m.csv"}).err,
              "bifun: m.csv: column m: numbers of this form are text; --decimal comma reads them as numbers\n");
    EXPECT_NE(directory.run({"describe", "d.csv"}).err.find("\"a:DATE 'DD.MM.YYYY',b:DATE 'MM/DD/YYYY',c:DATE 'DD-MM-YYYY'\"\n"),
              std::string::npos);
    expect_answer("a,b\n1.2.2024,1/13/2024\n", "SELECT a, b FROM t", "a,b\n2024-02-01,2024-01-13\n",
                  {"--types", "a:DATE 'DD.MM.YYYY',b:DATE 'MM/DD/YYYY'"});
    directory.write("t.csv", "b,day,pause,n,s,flag,x\n1,01.01.2024,1:00,1,a,x,300\n0,01.01.2024,1:00,2,a,true,3\n");
    EXPECT_EQ(described({"t.csv"}).err.substr(0, 58), "bifun: t.csv, line 2, column x: \"300\" does not fit TINYINT");
    const run_result left = described({"--ignore-errors", "t.csv"});
    EXPECT_NE(left.out.find("n,\"DECIMAL(8, 2)\",1,0,2,2,,\n"), std::string::npos) << left.out;
    EXPECT_TRUE(left.err.starts_with("bifun: 1 row left out; the first: t.csv, line 2, column x: ")) << left.err;
    EXPECT_EQ(directory.run({"describe", "--types", "t.days:DATE", "t.csv"}).err, "bifun: --types: t.csv has no column t.days\n");
}

} // namespace
