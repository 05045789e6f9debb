// SPDX-License-Identifier: Apache-2.0
// The types that --types gives: their widths are kept to, and they may be those of several files.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

TEST(ColumnTypes, Widths) {
    struct width {
        std::string type, fitting, shown, too_wide, name;
    };
    const width widths[] = {
        {"DECIMAL(4,2)", "-12.5", "-12.50", "1.234", "DECIMAL(4, 2)"},
        {"numeric( 4 , 2 )", "0", "0.00", "100", "DECIMAL(4, 2)"},
        {"DECIMAL(3)", "1.0e2", "100", "0.5", "DECIMAL(3, 0)"},
        {"DECIMAL(38,10)", "1234567890123456789.5", "1234567890123456789.5000000000", "0.00000000001", "DECIMAL(38, 10)"},
        {"TINYINT", "-128", "-128", "128", "TINYINT"},
        {"INT2", "32767", "32767", "-32769", "SMALLINT"},
        {"VARCHAR(3)", "äöü", "äöü", "ab  ", "VARCHAR(3)"},
        {"character varying (2)", "b ", "b ", "abc", "VARCHAR(2)"},
        {"CHAR(3)", "ab", "ab ", "äöüß", "CHAR(3)"},
        {"DATETIME(3)", "2024-01-02 03:04:05.670", "2024-01-02 03:04:05.67", "2024-01-02 03:04:05.6789", "TIMESTAMP(3)"},
        {"time(0) with time zone", "10:00:00+02:00", "10:00:00+02:00", "10:00:00.5+02:00", "TIME(0) WITH TIME ZONE"},
    };
    for (const width& tested : widths) {
        SCOPED_TRACE(tested.type);
        const arguments options = {"--types", joined({"a:", tested.type})};
        expect_answer(joined({"a\n", tested.fitting, "\n"}), "SELECT a FROM t", joined({"a\n", tested.shown, "\n"}), options);
        expect_failure(joined({"a\n", tested.too_wide, "\n"}), "SELECT a FROM t",
                       joined({"t.csv, line 2, column a: \"", tested.too_wide, "\" does not fit ", tested.name,
                               "; give the column a wider type with --types"}),
                       options);
    }
    for (const char* const bad : {"DECIMAL(39)", "DECIMAL(3,4)", "DECIMAL(1,1,1)", "VARCHAR(0)", "CHAR(32768)", "CHAR", "INT(3)", "DATE(1)",
                                  "TIME(7)", "VARCHAR()", "VARCHAR(x)", "VARCHAR)2("}) {
        expect_failure("a\n", "SELECT a FROM t", joined({"--types: \"", bad, "\" is not a type; there are BOOL, ..."}),
                       {"--types", joined({"a:", bad})});
    }
}

TEST(ColumnTypes, Booleans) {
    const std::string file = "n,b\n1,true\n2,F\n3,\n4,Yes\n5,0\n6,OFF\n";
    const arguments options = {"--types", "b:BOOLEAN"};
    expect_answer(file, "SELECT b, NOT b AS n, COALESCE(b, TRUE) AS c FROM t",
                  "b,n,c\ntrue,false,true\nfalse,true,false\n,,true\ntrue,false,true\nfalse,true,false\nfalse,true,false\n", options);
    expect_answer(file, "SELECT n FROM t WHERE b OR n = 6", "n\n1\n4\n6\n", options);
    expect_answer(file, "SELECT n FROM t WHERE NOT b AND n < 6", "n\n2\n5\n", options);
    expect_answer(file, "SELECT CASE WHEN b = TRUE THEN n ELSE 0 END AS x FROM t WHERE b IS NOT NULL LIMIT 2", "x\n1\n0\n", options);
    expect_failure("b\nmaybe\n", "SELECT b FROM t", "t.csv, line 2, column b: \"maybe\" is not of type BOOL; ...", options);
    expect_failure(file, "SELECT n FROM t WHERE b = 'true'",
                   "SQL, character 25, near =: BOOL and VARCHAR cannot be compared; write TRUE or FALSE without quotes", options);
}

TEST(ColumnTypes, NumbersAsPeopleWriteThem) {
    const arguments comma = {"--decimal", "comma"};
    const std::string file = "a;b;c;d\n1.234,56;-1.000;1'234'567,5;1.5\n,5;+2;1 234;01.02.2024\n";
    expect_answer(file, "SELECT a, b, c, d, a * b AS x FROM t",
                  "a,b,c,d,x\n1234.56,-1000,1234567.5,1.5,-1234560.00\n0.5,2,1234,01.02.2024,1.0\n", comma);
    expect_answer("a\n\"1,234.5\"\n12\n", "SELECT a + 1 AS x FROM t", "x\n1235.5\n13\n", {"--decimal", "."});
    for (const char* const text : {"1.5", "0.123", "1.2345,6", "1234.567", "1.234.56", ".123,4", "1,2,3", "1.234'567", ",", "-"}) {
        expect_failure(joined({"a\n\"", text, "\"\n"}), "SELECT a FROM t",
                       joined({"t.csv, line 2, column a: \"", text, "\" is not of type DECIMAL; ..."}),
                       {"--decimal", "comma", "--types", "a:DECIMAL"});
    }
    expect_failure(
        "a\n\"3,5\"\n", "SELECT a FROM t",
        "t.csv, line 2, column a: \"3,5\" is not of type DOUBLE; give the column another type with --types, such as a:VARCHAR, or "
        "read numbers such as this with --decimal comma",
        {"--types", "a:DOUBLE"});
    expect_failure("a\n", "SELECT a FROM t", "--decimal: \"x\" is neither comma nor point", {"--decimal", "x"});
    const scratch_directory directory;
    directory.write("t.csv", file);
    EXPECT_TRUE(directory.run({"describe", "--decimal", "comma", "t.csv"})
                    .out.ends_with("\na,DECIMAL,2,0,\",5\",\"1.234,56\",,\nb,INT,2,0,-1.000,+2,,\n"
                                   "c,DECIMAL,2,0,1 234,\"1'234'567,5\",,\nd,VARCHAR,2,0,01.02.2024,1.5,2,1.5\n"));
}

TEST(ColumnTypes, Formats) {
    const std::string file = "d,m,t\n31.12.2024,\"Jan 2, 2024 3:04:05 PM\",7.30\n, ,\n";
    const std::string types = "d:DATE 'DD.MM.YYYY', m : timestamp 'Mon DD, YYYY HH:MI:SS AM',t:TIME 'HH24.MI'";
    const auto of_type = [](const std::string& type) { return arguments{"--types", joined({"d:", type})}; };
    expect_answer(replaced(file, ", ,", ",,"), "SELECT d + 1 AS d, m, t FROM t", "d,m,t\n2025-01-01,2024-01-02 15:04:05,07:30:00\n,,\n",
                  {"--types", types});
    expect_failure(
        file, "SELECT d FROM t",
        "t.csv, line 2, column d: \"31.12.2024\" is not of type DATE; give the column another type with --types, such as d:VARCHAR, "
        "or a format, as in \"d:DATE 'DD.MM.YYYY'\"",
        of_type("DATE"));
    expect_failure(file, "SELECT d FROM t", "t.csv, line 2, column d: \"31.12.2024\" is not of type DATE 'MM.DD.YYYY'; ...",
                   of_type("DATE 'MM.DD.YYYY'"));
    expect_failure("d\n12/31/23\n", "SELECT d FROM t",
                   "t.csv, line 2, column d: \"12/31/23\" has a year of two digits, and DATE 'MM/DD/YYYY' reads one of four; give the "
                   "column the format with YY, DATE 'MM/DD/YY', or ...",
                   of_type("DATE 'MM/DD/YYYY'"));
    expect_answer("d\n12/31/0023\n", "SELECT d FROM t", "d\n0023-12-31\n", of_type("DATE 'MM/DD/YYYY'"));
    expect_failure("d\n01:02:03.1234567\n", "SELECT d FROM t",
                   "t.csv, line 2, column d: \"01:02:03.1234567\" has more digits than TIME 'HH24:MI:SS.FF' keeps; ...",
                   of_type("TIME 'HH24:MI:SS.FF'"));
    const std::pair<std::string, std::string> refused[] = {
        {"DATE 'DD HH24'", "a DATE keeps no time of day, and 'DD HH24' has one; TIMESTAMP keeps it"},
        {"TIME 'DD HH24'", "a TIME keeps no date, and 'DD HH24' has one; TIMESTAMP keeps it"},
        {"INT '999'", "formats are for DATE, TIME and TIMESTAMP, and INT has none"},
        {"DATE 'Q'", "by the date format \"Q\" at position 1 cannot be read"},
        {"DATE '", "\"DATE '\" is not a type; ..."},
    };
    for (const auto& [type, message] : refused) {
        expect_failure(file, "SELECT d FROM t", joined({"--types: ", message}), of_type(type));
    }
}

TEST(ColumnTypes, OfSeveralFiles) {
    const scratch_directory directory;
    directory.write("t.csv", "a,b\n1,2\n");
    directory.write("u-1.csv", "a,c\n1,2\n");
    const auto shown = [&](const std::string& types, const std::string& from) {
        const run_result result = directory.run({"--types", types, "t.csv", "u-1.csv", joined({"SELECT * FROM ", from})});
        return joined({result.out, result.err});
    };
    const std::string types_of_both = "a:DECIMAL(3,1),B:DECIMAL(4,2),U_1.a:CHAR(2),u-1.c:DECIMAL(2,1)";
    EXPECT_EQ(shown(types_of_both, "t"), "a,b\n1.0,2.00\n");
    EXPECT_EQ(shown(types_of_both, "u_1"), "a,c\n1 ,2.0\n");
    EXPECT_EQ(shown("d:INT", "t"), "bifun: --types: no file has a column d\n");
    EXPECT_EQ(shown("t.c:INT", "t"), "bifun: --types: no file has a column t.c\n");
    directory.write("v.csv", "\"a, b\",\"c \"\"x\"\"\",d:e\n1,2,3\n");
    EXPECT_EQ(
        directory.run({"--types", R"("a, b":DECIMAL(2,1),v."c ""x""":TEXT)", "--types", "d:e:DOUBLE", "v.csv", "SELECT * FROM v"}).out,
        "\"a, b\",\"c \"\"x\"\"\",d:e\n1.0,2,3\n");
    EXPECT_EQ(shown("a, b:INT", "t"),
              "bifun: --types: \"a\" is not of the form name:TYPE; a name with a comma stands in double quotes, as in '\"a, "
              "b\":INT'\n");
    EXPECT_EQ(shown("a:INT,A:DECIMAL(2,1)", "t"), "bifun: --types: A has two types\n");
    directory.write("c.csv", "id,ID\n1,2\n");
    EXPECT_EQ(directory.run({"--types", "ID:DECIMAL(3,2),id:DECIMAL(2,1)", "c.csv", "SELECT * FROM c"}).out, "id,ID\n1.0,2.00\n");
}

} // namespace
