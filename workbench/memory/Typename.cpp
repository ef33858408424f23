// SPDX-License-Identifier: Apache-2.0
#include "host/memory/Typename.h"

#include "host/memory/MemoryException.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <string_view>

namespace krod {

namespace {

std::string demangled(const char* mangled) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &std::free);
    constexpr int NoMemory = -1; // as the C++ ABI of g++ numbers it
    if (status == NoMemory) throw MemoryException();
    return text ? text.get() : mangled;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isIdentifier(char c) {
    return c == '_' || isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Replaces every occurrence that does not continue a longer qualified name.
void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
        if (at > 0 && (isIdentifier(text[at - 1]) || text[at - 1] == ':')) {
            at += from.size();
            continue;
        }
        text.replace(at, from.size(), to);
        at += to.size();
    }
}

/// Removes every occurrence, wherever it stands.
void removeAll(std::string& text, std::string_view part) {
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at))
        text.erase(at, part.size());
}

/// Removes blanks, except between two identifiers ("unsigned int").
std::string withoutBlanks(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool needed =
            i > 0 && i + 1 < text.size() && isIdentifier(text[i - 1]) && isIdentifier(text[i + 1]);
        if (text[i] != ' ' || needed) result += text[i];
    }
    return result;
}

/// Removes the suffixes of integer template arguments: "2ul" becomes "2".
std::string withoutIntegerSuffixes(std::string_view text) {
    std::string result;
    bool inNumber = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool starts = isDigit(text[i]) && (i == 0 || !isIdentifier(text[i - 1]));
        inNumber = starts || (inNumber && isIdentifier(text[i]));
        if (inNumber && (text[i] == 'u' || text[i] == 'l')) continue;
        result += text[i];
    }
    return result;
}

} // namespace

std::string typenameOf(const std::type_info& type) {
    std::string text = demangled(type.name());
    removeAll(text, "(anonymous namespace)::");
    text = withoutIntegerSuffixes(withoutBlanks(text));
    replaceAll(text, "krod::", "");
    replaceAll(text, "std::__cxx11::basic_string<char,std::char_traits<char>,std::allocator<char>>",
               "string");
    replaceAll(text, "std::basic_string<char,std::char_traits<char>,std::allocator<char>>", "string");
    replaceAll(text, "std::__cxx11::string", "string");
    replaceAll(text, "std::string", "string");
    return text;
}

} // namespace krod
