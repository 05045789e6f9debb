#include "bench/peers/cases.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace bifun::peers {
namespace {

constexpr table_column columns[] = {
    {"x", value_type::BIGINT, content::magnitude, 0, 0x1p62, false},
    {"y", value_type::BIGINT, content::magnitude, 0, 0x1p62, false},
    {"divisor", value_type::BIGINT, content::magnitude, 1, 1e6, false},
    {"id", value_type::BIGINT, content::uniform, 0, 2e9, false},
    {"d", value_type::DOUBLE, content::uniform, -1000, 1000, false},
    {"d2", value_type::DOUBLE, content::uniform, -1000, 1000, false},
    {"dn", value_type::DOUBLE, content::uniform, -1000, 1000, true},
    {"unit", value_type::DOUBLE, content::uniform, -1, 1, false},
    {"positive", value_type::DOUBLE, content::uniform, 0.001, 1000, false},
    {"exponent", value_type::DOUBLE, content::uniform, -10, 10, false},
    {"m18", value_type::DECIMAL, content::magnitude, 0, 18, false, 18, 4},
    {"k18", value_type::DECIMAL, content::magnitude, 0, 18, false, 18, 4},
    {"m38", value_type::DECIMAL, content::magnitude, 0, 38, false, 38, 10},
    {"k38", value_type::DECIMAL, content::magnitude, 0, 38, false, 38, 10},
    {"s", value_type::VARCHAR, content::uniform, 5, 40, false},
    {"sn", value_type::VARCHAR, content::uniform, 5, 40, true},
    {"ts", value_type::DATETIME, content::uniform, 1970, 2037, false},
    {"tsn", value_type::DATETIME, content::uniform, 1970, 2037, true},
};

constexpr case_argument column(std::string_view name) { return {argument_source::column, name}; }
constexpr case_argument constant(std::string_view value) { return {argument_source::constant, value}; }
constexpr case_argument positive(std::string_view name) { return {argument_source::positive, name}; }

} // namespace

std::span<const table_column> table_columns() { return columns; }

const table_column& column_named(std::string_view name) {
    const auto* const found = std::ranges::find(columns, name, &table_column::name);
    if (found == std::ranges::end(columns)) {
        throw std::runtime_error("no column named " + std::string(name));
    }
    return *found;
}

std::span<const bench_case> bench_cases() {
    static const std::vector<bench_case> cases = {
        {"abs(bigint)", "abs(x)", "abs(x)", "x", "babs_a_math_int", {column("x")}},
        {"mod(bigint, bigint)", "x % divisor", "x % divisor", "x", "bmod_aa_math_int64", {column("x"), column("divisor")}},
        {"mod(bigint below 2^31, bigint)", "id % divisor", "id % divisor", "x", "bmod_aa_math_int64", {column("id"), column("divisor")}},
        {"mod(bigint, 7)", "x % 7", "x % 7", "x", "bmod_av_do_math_int64", {column("x"), constant("7")}},
        {"greatest(bigint, bigint)", "greatest(x, y)", "greatest(x, y)", "x", "bgreatest_aa_math_bigint", {column("x"), column("y")}},
        {"greatest(double, double)", "greatest(d, d2)", "greatest(d, d2)", "d", "bgreatest_aa_math_dbl", {column("d"), column("d2")}},
        {"greatest(m18, m18)", "greatest(m18, k18)", "greatest(m18, k18)", "m18", "bgreatest_aa_math_dec", {column("m18"), column("k18")}},
        {"greatest(m38, m38)", "greatest(m38, k38)", "greatest(m38, k38)", "m38", "bgreatest_aa_math_dec", {column("m38"), column("k38")}},
        {"coalesce(double, 1.5)",
         "coalesce(dn, 1.5::DOUBLE)",
         "coalesce(dn, toFloat64(1.5))",
         "d",
         "bnvl_double_av",
         {column("dn"), constant("1.5")}},
        {"coalesce(double, double)", "coalesce(dn, d2)", "coalesce(dn, d2)", "d", "bnvl_double_aa", {column("dn"), column("d2")}},
        {"coalesce(timestamp, timestamp)", "coalesce(tsn, ts)", "coalesce(tsn, ts)", "ts", "bnvl_date_aa", {column("tsn"), column("ts")}},
        {"coalesce(varchar, 'unknown')",
         "coalesce(sn, 'unknown')",
         "coalesce(sn, 'unknown')",
         "s",
         "bnvl_varchar_av",
         {column("sn"), constant("unknown")}},
        {"coalesce(varchar, varchar)", "coalesce(sn, s)", "coalesce(sn, s)", "s", "bnvl_varchar_aa", {column("sn"), column("s")}},
        {"if(double > 0, double, double)",
         "if(d > 0, d, d2)",
         "if(d > 0, d, d2)",
         "d",
         "bifoperator_double_aaa",
         {positive("d"), column("d"), column("d2")}},
        {"if(double > 0, varchar, varchar)",
         "if(d > 0, s, sn)",
         "if(d > 0, s, sn)",
         "s",
         "bifoperator_varchar_aaa",
         {positive("d"), column("s"), column("sn")}},
        {"abs(double)", "abs(d)", "abs(d)", "d", "babs_a_math_dbl", {column("d")}},
        {"abs(m18)", "abs(m18)", "abs(m18)", "m18", "babs_a_math_dec", {column("m18")}},
        {"abs(m38)", "abs(m38)", "abs(m38)", "m38", "babs_a_math_dec", {column("m38")}},
        {"round(double, 0)", "round(d)", "round(d)", "d", "bround_av_li_math_dbl", {column("d"), constant("0")}},
        {"round(double, 2)", "round(d, 2)", "round(d, 2)", "d", "bround_av_li_math_dbl", {column("d"), constant("2")}},
        {"trunc(double)", "trunc(d)", "trunc(d)", "d", "btrunc_def_a_math_dbl", {column("d")}},
        {"ceil(double)", "ceil(d)", "ceil(d)", "d", "bceil_a_math_dbl", {column("d")}},
        {"mod(double, double)", "d % positive", "d % positive", "d", "bmod_aa_math_dbl", {column("d"), column("positive")}},
        {"sqrt(double)", "sqrt(positive)", "sqrt(positive)", "d", "bsqrt_a_math_dbl", {column("positive")}},
        {"exp(double)", "exp(exponent)", "exp(exponent)", "d", "bexp_a_math_dbl", {column("exponent")}},
        {"ln(double)", "ln(positive)", "log(positive)", "d", "bln_a_math_dbl", {column("positive")}},
        {"sin(double)", "sin(d)", "sin(d)", "d", "bsin_a_math_dbl", {column("d")}},
        {"power(double, double)",
         "pow(positive, unit)",
         "pow(positive, unit)",
         "d",
         "bpower_aa_math_dbl",
         {column("positive"), column("unit")}},
        {"round(m18, 2)", "round(m18, 2)", "round(m18, 2)", "m18", "bround_dec_av_li_math_dbl", {column("m18"), constant("2")}},
        {"round(m38, 2)", "round(m38, 2)", "round(m38, 2)", "m38", "bround_dec_av_li_math_dbl", {column("m38"), constant("2")}},
        {"trunc(m18)", "trunc(m18)", "trunc(m18)", "m18", "btrunc_dec_def_a_math", {column("m18")}},
        {"trunc(m38)", "trunc(m38)", "trunc(m38)", "m38", "btrunc_dec_def_a_math", {column("m38")}},
        {"ceil(m38)", "ceil(m38)", "ceil(m38)", "m38", "bceil_a_math_dec", {column("m38")}},
        {"text of bigint", "x::VARCHAR", "toString(x)", "s", "bto_char_a_int64_to_varchar", {column("x")}},
        {"text of m18", "m18::VARCHAR", "toString(m18)", "s", "bto_char_a_dec_to_varchar", {column("m18")}},
        {"text of m38", "m38::VARCHAR", "toString(m38)", "s", "bto_char_a_dec_to_varchar", {column("m38")}},
        {"text of double", "d::VARCHAR", "toString(d)", "s", "bto_char_a_double_to_varchar", {column("d")}},
    };
    return cases;
}

std::vector<std::string_view> columns_read(const bench_case& bench_case) {
    std::vector<std::string_view> names;
    const auto add = [&](std::string_view name) {
        if (std::ranges::find(names, name) == names.end()) {
            names.push_back(name);
        }
    };
    for (const case_argument& argument : bench_case.arguments) {
        if (argument.source != argument_source::constant) {
            add(argument.text);
        }
    }
    add(bench_case.like_result);
    return names;
}

} // namespace bifun::peers
