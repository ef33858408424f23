// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Html.h"

#include "apps/plime/terminal/HtmlEntities.h"
#include "apps/plime/terminal/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace workbench {
namespace {

/// What stands between '<' and '>'.
struct Tag {
    std::string name; ///< in lower case, "/a" for an end tag
    std::string_view attributes;
};

/// The address of `<A HREF="address">`, with or without quotes; empty without one.
std::string_view addressOf(const Tag& tag) {
    const std::size_t found = lowerCase(tag.attributes).find("href=");
    if (found == std::string::npos) return {};
    std::string_view value = tag.attributes.substr(found + 5);
    if (value.starts_with('"') || value.starts_with('\'')) {
        const char quote = value.front();
        value.remove_prefix(1);
        return value.substr(0, value.find(quote));
    }
    return value.substr(0, value.find_first_of(" >"));
}

constexpr unsigned long NoBreakSpace = 0xA0; // terminals and wrapping take a plain one

void appendUtf8(std::string& out, unsigned long code) {
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return;
    const auto put = [&](unsigned long byte) { out += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (code < 0x80) return put(code);
    if (code < 0x800) return put(0xC0 | code >> 6U), put(0x80 | (code & 0x3FU));
    if (code < 0x10000)
        return put(0xE0 | code >> 12U), put(0x80 | (code >> 6U & 0x3FU)), put(0x80 | (code & 0x3FU));
    put(0xF0 | code >> 18U), put(0x80 | (code >> 12U & 0x3FU)), put(0x80 | (code >> 6U & 0x3FU));
    put(0x80 | (code & 0x3FU));
}

/// The characters of an entity, without '&' and ';'; empty for one that is not known.
std::string entity(std::string_view name) {
    std::string out;
    if (!name.starts_with('#')) {
        const unsigned long code = namedCharacter(name);
        appendUtf8(out, code == NoBreakSpace ? ' ' : code);
        return out;
    }
    name.remove_prefix(1);
    const int base = name.starts_with('x') || name.starts_with('X') ? 16 : 10;
    if (base == 16) name.remove_prefix(1);
    unsigned long code = 0;
    const char* const end = name.data() + name.size();
    if (std::from_chars(name.data(), end, code, base).ptr == end) appendUtf8(out, code);
    return out;
}

/// Builds the text from tags and characters.
class Reader {
public:
    std::string read(std::string_view html) {
        while (!html.empty()) html.remove_prefix(step(html));
        lineEnds(0);
        return std::move(out);
    }

private:
    /// Handles what stands first and returns its length.
    std::size_t step(std::string_view html) {
        if (html[0] == '<') {
            if (const std::size_t length = tag(html)) return length;
        } else if (html[0] == '&') {
            const std::size_t end = html.substr(0, 12).find(';');
            const std::string text = end == std::string_view::npos ? "" : entity(html.substr(1, end - 1));
            if (!text.empty()) {
                character(text);
                return end + 1;
            }
        }
        character(html.substr(0, 1));
        return 1;
    }

    /// The length of the tag at the start, or 0 when there is none.
    std::size_t tag(std::string_view html) {
        if (html.starts_with("<!--")) {
            const std::size_t end = html.find("-->");
            return end == std::string_view::npos ? 0 : end + 3;
        }
        const std::size_t end = html.find('>');
        const bool begins = html.size() > 1 && (html[1] == '/' || (lowerCase(html.substr(1, 1))[0] >= 'a' &&
                                                                   lowerCase(html.substr(1, 1))[0] <= 'z'));
        if (end == std::string_view::npos || !begins) return 0;
        const std::string_view inner = html.substr(1, end - 1);
        const std::size_t nameEnd = std::min(inner.find_first_of(" \t\r\n"), inner.size());
        std::string name = lowerCase(inner.substr(0, nameEnd));
        if (name.size() > 1 && name.ends_with('/')) name.pop_back();
        obey({std::move(name), inner.substr(nameEnd)});
        return end + 1;
    }

    void obey(const Tag& tag) {
        constexpr std::array<std::string_view, 24> Blocks = {
            "p",   "/p",   "div", "/div", "ul", "/ul",        "ol",     "/ol",
            "h1",  "/h1",  "h2",  "/h2",  "h3", "/h3",        "table",  "/table",
            "pre", "/pre", "dl",  "/dl",  "hr", "blockquote", "center", "/center"};
        if (tag.name == "pre" || tag.name == "/pre") preformatted = tag.name == "pre";
        if (std::ranges::find(Blocks, tag.name) != Blocks.end()) lineEnds(2);
        if (tag.name == "br" || tag.name == "tr" || tag.name == "li" || tag.name == "dt") lineEnds(1);
        if (tag.name == "li") out += "- ";
        if (tag.name == "td" || tag.name == "th") blank = true;
        if (tag.name == "sup") out += '^';
        if (tag.name == "a") address = addressOf(tag);
        if (tag.name == "/a" && !address.empty()) {
            out.append(" (").append(address).append(")");
            address = {};
        }
    }

    void character(std::string_view text) {
        const bool white = text == " " || text == "\n" || text == "\t" || text == "\r";
        if (white && !preformatted) {
            blank = true;
            return;
        }
        if (blank && !out.empty() && out.back() != '\n' && out.back() != ' ') out += ' ';
        blank = false;
        out += text;
    }

    /// Ends the line, with one empty line after it for 2; what was ended already is not ended again.
    void lineEnds(std::size_t wanted) {
        blank = false;
        while (!out.empty() && (out.back() == ' ' || out.back() == '\n')) {
            if (out.back() == '\n' && !out.ends_with("\n\n") && wanted == 1) return;
            out.pop_back();
        }
        if (!out.empty()) out.append(wanted, '\n');
    }

    std::string out;
    std::string_view address;
    bool blank = false;
    bool preformatted = false;
};

} // namespace

std::string readableText(std::string_view html) { return Reader().read(html); }

} // namespace workbench
