// test_strings.cpp - the fixed-capacity strings, the string list and the number texts, case by case from
// string_cases.txt
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

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

// Each operation changes the string (the result is then its units) or answers a number.
template <class S>
std::string run(const std::string& op, const std::vector<std::string>& a)
{
    S s(a.at(0).c_str());
    const auto t = [&](size_t i) { return S(a.at(i).c_str()); };
    const auto c = [&](size_t i) { return a.at(i).c_str(); };
    const auto n = [&](size_t i) { return std::stoi(a.at(i), nullptr, 0); };
    const auto u = [&](size_t i) { return (unsigned short)a.at(i)[0]; };
    const std::map<std::string, std::function<long long()>> numbers = {
        {"indexOf", [&] { return s.indexOf(t(1), n(2)); }},
        {"indexOfCaseSen", [&] { return s.indexOfCaseSen(t(1), n(2)); }},
        {"indexOfChar", [&] { return s.indexOf(u(1), n(2)); }},
        {"lastIndexOfChar", [&] { return s.lastIndexOf(u(1), n(2)); }},
        {"compare", [&] { return (s.compare(t(1)) > 0) - (s.compare(t(1)) < 0); }},
        {"equal", [&] { return s == t(1); }},
        {"isEqual", [&] { return s.isEqual(t(1)); }},
        {"less", [&] { return s < t(1); }},
        {"contains", [&] { return s.contains(t(1)); }},
        {"startsWith", [&] { return s.startsWith(t(1)); }},
        {"endsWith", [&] { return s.endsWith(t(1)); }},
        {"startsWithCaseSen", [&] { return s.startsWithCaseSen(c(1)); }},
    };
    const std::map<std::string, std::function<void()>> edits = {
        {"make", [] {}},
        {"assign", [&] { s = c(1); }},
        {"add", [&] { s.add(c(1)); }},
        {"plus", [&] { s += c(1); }},
        {"addString", [&] { s.add(t(1)); }},
        {"plusSelf", [&] { s += s; }},
        {"addNr", [&] { s.addNr(n(1)); }},
        {"remove", [&] { s.remove(n(1), n(2)); }},
        {"insert", [&] { s.insert(n(1), t(2)); }},
        {"insertSelf", [&] { s.insert(n(1), s); }},
        {"removeText", [&] { s.remove(t(1)); }},
        {"removeSelf", [&] { s.remove(s); }},
        {"removeCaseSens", [&] { s.removeCaseSens(t(1)); }},
        {"replace", [&] { s.replace(t(1), t(2)); }},
        {"replaceCaseSen", [&] { s.replaceCaseSen(t(1), t(2)); }},
        {"trim", [&] { s.trim(); }},
        {"upper", [&] { s.makeUpper(); }},
        {"lower", [&] { s.makeLower(); }},
        {"left", [&] { s = s.left(n(1)); }},
        {"mid", [&] { s = s.mid(n(1), n(2)); }},
    };
    if (numbers.count(op))
        return std::to_string(numbers.at(op)());
    if constexpr (sizeof s.text[0] == 1) { // the 8-bit families' own members
        bool ok = false;
        const int v = op == "toInt" ? s.toInt(&ok) : 0;
        if (op == "toInt")
            return std::to_string(v) + (ok ? "_ok" : "_bad");
        if (op == "addNrWidth")
            s.addNr(n(1), (unsigned char)n(2));
    }
    if (op != "addNrWidth")
        edits.at(op)();
    return show(s) + (s.length <= int(sizeof s.text / sizeof s.text[0]) - 1 && s.text[s.length] != 0 ? "<open>" : "");
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
