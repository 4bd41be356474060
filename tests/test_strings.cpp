// test_strings.cpp - the fixed-capacity strings, the string list and the number texts, case by case from
// string_cases.txt
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "fuzz/string_ops.h"
#include "shared/string/vk_string.h"

namespace {

// The three families, of ten (16-bit, even 8-bit) or fifteen (odd 8-bit) units.
using W = _vkString<10>;
using E = _vkString8_evenSize<10>;
using U = _vkString8_UnevenSize<15>;

// A table word: "" is the empty text; \s \t \n \r and \xHH stand for their characters.
std::string unescape(const std::string& t)
{
    std::string s;
    for (size_t i = 0; t != "\"\"" && i < t.size(); ++i) {
        const char c = t[i] == '\\' && i + 1 < t.size() ? t[++i] : 0;
        if (c == 'x')
            s += char(std::stoi(t.substr(i + 1, 2), nullptr, 16)), i += 2;
        else
            s += c == 0 ? t[i] : c == 's' ? ' ' : c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c;
    }
    return s;
}

// The units of a string as a table word: what unescape reads, wide units as \xHHHH.
template <class S>
std::string show(const S& s)
{
    std::string out;
    for (int i = 0; i < s.length && i < int(sizeof s.text / sizeof s.text[0]); ++i) {
        const unsigned u = sizeof s.text[0] == 1 ? (unsigned char)s.text[i] : unsigned(s.text[i]);
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", u);
        out += u == ' '                ? "\\s"
               : u == '\t'             ? "\\t"
               : u == '\n'             ? "\\n"
               : u == '\r'             ? "\\r"
               : u < 0x20 || u >= 0x7F ? hex
                                       : std::string(1, char(u));
    }
    return out.empty() ? "\"\"" : out;
}

// An operation on a string of the case's first text: its answer, or the units it leaves.
template <class S>
std::string run(const std::string& op, const std::vector<std::string>& a)
{
    S s(a.at(0).c_str());
    const vkstr::OpArgs args{a};
    if constexpr (!vkstr::isWide<S>)
        if (op == "toInt") {
            bool ok = false;
            const int v = s.toInt(&ok);
            return std::to_string(v) + (ok ? "_ok" : "_bad");
        }
    for (const auto& [name, ask] : vkstr::stringOps<S>().asks)
        if (op == name)
            return std::to_string(ask(s, args));
    for (const auto& [name, edit] : vkstr::stringOps<S>().edits)
        if (op == name) {
            edit(s, args);
            const bool open = s.length <= int(sizeof s.text / sizeof s.text[0]) - 1 && s.text[s.length] != 0;
            return show(s) + (open ? "<open>" : "");
        }
    throw std::runtime_error("unknown string operation " + op);
}

// Operations on no string family: the number texts and the list.
std::string runOther(const std::string& op, const std::vector<std::string>& a)
{
    if (op == "int2Str")
        return show(int2Str(std::stoi(a.at(0))));
    if (op == "float2Str")
        return show(float2Str(std::stof(a.at(0)), std::stoi(a.at(1)), (unsigned short)a.at(2)[0]));
    if (op == "isDigit")
        return std::to_string(vkIsDigit((unsigned short)std::stoi(a.at(0), nullptr, 0)));
    _vkStringList l;
    std::stringstream in(a.at(0));
    for (std::string t; std::getline(in, t, ',');)
        l.append(_vkString<500>(t.c_str()), false, false);
    if (op == "find")
        return std::to_string(l.find(_vkString<500>(a.at(1).c_str()), a.at(2) == "1"));
    if (op == "append")
        l.append(_vkString<500>(a.at(1).c_str()), a.at(2) == "1", a.at(3) == "1");
    else if (op == "sort")
        l.sort(a.at(1) == "1");
    std::string out;
    for (int i = 0; i < l.count; ++i)
        out += (i ? "," : "") + show(l.items[i]);
    return out;
}

} // namespace

TEST(Strings, EveryCase)
{
    std::ifstream table(std::string(VKTIFF_SOURCE_DIR) + "/tests/data/string_cases.txt");
    int cases = 0;
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line.substr(0, line.find(" #")));
        std::string families, op, w;
        std::vector<std::string> args;
        if (!(words >> families >> op) || families[0] == '#')
            continue;
        while (words >> w && w != "=")
            args.push_back(unescape(w));
        std::string want;
        words >> want;
        SCOPED_TRACE(line);
        for (char f : families == "*" ? std::string("weu") : families) {
            const std::string got = f == 'w'   ? run<W>(op, args)
                                    : f == 'e' ? run<E>(op, args)
                                    : f == 'u' ? run<U>(op, args)
                                               : runOther(op, args);
            EXPECT_EQ(got, want) << "family " << f;
            ++cases;
        }
    }
    EXPECT_GT(cases, 100);
}
