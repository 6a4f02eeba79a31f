#include "sim/session/XmlElement.h"

#include "kelmar/base/String.h"

#include <fstream>
#include <sstream>

#include <cstdint>

namespace montala::sim {

// The parser behind XmlElement::parse; a recursive descent over the text.
class XmlParser {
public:
    explicit XmlParser(std::string_view text) : text(text) {}

    std::unique_ptr<XmlElement> document(std::string& error)
    {
        skipMisc();
        if (failed.empty() && !at('<'))
            fail("an element is expected");
        std::unique_ptr<XmlElement> root;
        if (failed.empty())
            root = element();
        if (failed.empty()) {
            skipMisc();
            if (pos < text.size())
                fail("text after the root element");
        }
        if (!failed.empty()) {
            error = failed;
            return nullptr;
        }
        return root;
    }

private:
    bool at(char c) const { return pos < text.size() && text[pos] == c; }
    bool startsWith(std::string_view prefix) const { return text.substr(pos, prefix.size()) == prefix; }

    void fail(const std::string& message)
    {
        if (!failed.empty())
            return;
        int line = 1, column = 1;
        for (std::size_t i = 0; i < pos && i < text.size(); ++i) {
            if (text[i] == '\n') {
                ++line;
                column = 1;
            } else {
                ++column;
            }
        }
        failed = "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + message;
    }

    void skipSpace()
    {
        while (pos < text.size() && (text[pos] == ' ' || text[pos] == '\t' || text[pos] == '\r' || text[pos] == '\n'))
            ++pos;
    }

    bool skipUntil(std::string_view end)
    {
        const auto found = text.find(end, pos);
        if (found == std::string_view::npos) {
            fail("\"" + std::string(end) + "\" is missing");
            return false;
        }
        pos = found + end.size();
        return true;
    }

    // Declarations, comments, processing instructions and white space
    // outside the root.
    void skipMisc()
    {
        while (failed.empty()) {
            skipSpace();
            if (startsWith("<?"))
                skipUntil("?>");
            else if (startsWith("<!--"))
                skipUntil("-->");
            else if (startsWith("<!DOCTYPE"))
                skipUntil(">");
            else
                return;
        }
    }

    static bool isNameChar(char c)
    {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-'
               || c == '.' || c == ':' || static_cast<unsigned char>(c) >= 0x80;
    }

    std::string name()
    {
        const std::size_t start = pos;
        while (pos < text.size() && isNameChar(text[pos]))
            ++pos;
        if (pos == start)
            fail("a name is expected");
        return std::string(text.substr(start, pos - start));
    }


    // At '&': appends the character the entity stands for.
    void entity(std::string& out)
    {
        const auto end = text.find(';', pos);
        if (end == std::string_view::npos || end - pos > 12) {
            fail("an entity without ';'");
            return;
        }
        const std::string_view body = text.substr(pos + 1, end - pos - 1);
        if (body == "amp")
            out += '&';
        else if (body == "lt")
            out += '<';
        else if (body == "gt")
            out += '>';
        else if (body == "quot")
            out += '"';
        else if (body == "apos")
            out += '\'';
        else if (body.size() > 1 && body[0] == '#') {
            std::uint32_t code = 0;
            const bool hex = body[1] == 'x' || body[1] == 'X';
            for (std::size_t i = hex ? 2 : 1; i < body.size(); ++i) {
                const char c = body[i];
                int digit = -1;
                if (c >= '0' && c <= '9')
                    digit = c - '0';
                else if (hex && c >= 'a' && c <= 'f')
                    digit = c - 'a' + 10;
                else if (hex && c >= 'A' && c <= 'F')
                    digit = c - 'A' + 10;
                if (digit < 0 || code > 0x10FFFF) {
                    fail("a bad character reference");
                    return;
                }
                code = code * (hex ? 16 : 10) + static_cast<std::uint32_t>(digit);
            }
            Kelmar::String::appendUtf8(out, static_cast<char32_t>(code));
        } else {
            fail("the unknown entity &" + std::string(body) + ";");
            return;
        }
        pos = end + 1;
    }

    std::unique_ptr<XmlElement> element()
    {
        auto result = std::make_unique<XmlElement>();
        ++pos; // '<'
        result->elementName = name();
        while (failed.empty()) {
            skipSpace();
            if (startsWith("/>")) {
                pos += 2;
                return result;
            }
            if (at('>')) {
                ++pos;
                break;
            }
            const std::string attributeName = name();
            skipSpace();
            if (!at('=')) {
                fail("'=' is expected after " + attributeName);
                break;
            }
            ++pos;
            skipSpace();
            if (!at('"') && !at('\'')) {
                fail("a quoted value is expected for " + attributeName);
                break;
            }
            const char quote = text[pos++];
            std::string value;
            while (failed.empty() && pos < text.size() && text[pos] != quote) {
                if (text[pos] == '&')
                    entity(value);
                else if (text[pos] == '<')
                    fail("'<' inside an attribute value");
                else
                    value += text[pos++];
            }
            if (pos >= text.size())
                fail("the value of " + attributeName + " is not closed");
            ++pos;
            result->attributes[attributeName] = value;
        }
        // Content up to the matching end tag.
        while (failed.empty()) {
            if (pos >= text.size()) {
                fail("<" + result->elementName + "> is not closed");
                break;
            }
            if (startsWith("</")) {
                pos += 2;
                const std::string endName = name();
                skipSpace();
                if (endName != result->elementName)
                    fail("</" + endName + "> closes <" + result->elementName + ">");
                else if (!at('>'))
                    fail("'>' is expected");
                else
                    ++pos;
                break;
            }
            if (startsWith("<!--")) {
                skipUntil("-->");
            } else if (startsWith("<![CDATA[")) {
                const std::size_t start = pos + 9;
                if (skipUntil("]]>"))
                    result->content += text.substr(start, pos - 3 - start);
            } else if (startsWith("<?")) {
                skipUntil("?>");
            } else if (at('<')) {
                auto child = element();
                if (child)
                    result->childElements.push_back(std::move(child));
            } else if (at('&')) {
                entity(result->content);
            } else {
                result->content += text[pos++];
            }
        }
        return result;
    }

    std::string_view text;
    std::size_t pos = 0;
    std::string failed;
};

std::unique_ptr<XmlElement> XmlElement::parse(std::string_view text, std::string& error)
{
    // A byte order mark is allowed before the declaration.
    if (text.substr(0, 3) == "\xEF\xBB\xBF")
        text.remove_prefix(3);
    return XmlParser(text).document(error);
}

const std::string* XmlElement::attribute(const std::string& attributeName) const
{
    const auto found = attributes.find(attributeName);
    return found == attributes.end() ? nullptr : &found->second;
}

const XmlElement* XmlElement::child(std::string_view childName) const
{
    for (const auto& element : childElements)
        if (element->elementName == childName)
            return element.get();
    return nullptr;
}

std::unique_ptr<XmlElement> XmlElement::parseFile(const std::string& path, std::string& error)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = path + ": cannot be read";
        return nullptr;
    }
    std::ostringstream content;
    content << file.rdbuf();
    std::string parseError;
    auto root = parse(content.str(), parseError);
    if (!root)
        error = path + ": " + parseError;
    return root;
}

} // namespace montala::sim
