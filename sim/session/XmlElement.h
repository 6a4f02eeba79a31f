#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace montala::sim {

// A small reader for the XML resources a module gives the host (the
// translation table and the skin): elements, attributes, text, comments,
// CDATA and the predefined and numeric entities. Text is kept exactly as
// written, line breaks included, since translation keys are matched exactly.
class XmlElement {
public:
    // The root element, or null with `error` naming line and column.
    static std::unique_ptr<XmlElement> parse(std::string_view text, std::string& error);
    // Reads and parses a file; on failure `error` starts with the path.
    static std::unique_ptr<XmlElement> parseFile(const std::string& path, std::string& error);

    const std::string& name() const { return elementName; }
    const std::string& text() const { return content; }
    const std::vector<std::unique_ptr<XmlElement>>& children() const { return childElements; }
    // Null when the attribute is absent.
    const std::string* attribute(const std::string& name) const;
    // The first child of that name, or null.
    const XmlElement* child(std::string_view name) const;

private:
    friend class XmlParser;

    std::string elementName;
    std::map<std::string, std::string> attributes;
    std::string content;
    std::vector<std::unique_ptr<XmlElement>> childElements;
};

} // namespace montala::sim
