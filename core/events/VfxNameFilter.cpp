#include "core/events/VfxNameFilter.h"

#include "util/Result.h"

#include <algorithm>

namespace montala::core {

using util::Result;

namespace {

bool isAllowed(const std::string& text)
{
    static const std::string allowed =
        ".*-_ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    return text.find_first_not_of(allowed) == std::string::npos;
}

// A dot stands for itself, a star for exactly one character of any kind.
std::string translate(const std::string& text)
{
    std::string translated;
    translated.reserve(text.size() * 2);
    for (char c : text) {
        if (c == '.')
            translated += "\\.";
        else if (c == '*')
            translated += '.';
        else
            translated += c;
    }
    return translated;
}

// Characters of the name a translated pattern consumes: "\." is one.
size_t matchedLength(const std::string& translated)
{
    return translated.size() - static_cast<size_t>(std::count(translated.begin(), translated.end(), '\\'));
}

} // namespace

void VfxNameFilter::setPatterns(const std::vector<std::pair<std::string, std::string>>& newPatterns)
{
    patterns.clear();
    for (const auto& [prefix, postfix] : newPatterns) {
        if (prefix.empty() && postfix.empty())
            throw Result::InvalidArgument;
        if (!isAllowed(prefix) || !isAllowed(postfix))
            throw Result::InvalidArgument;
        Pattern pattern;
        pattern.prefix = translate(prefix);
        pattern.postfix = translate(postfix);
        pattern.minimumLength = matchedLength(pattern.prefix) + matchedLength(pattern.postfix);
        pattern.expression = std::regex("(" + pattern.prefix + ")([0-9]*)(" + pattern.postfix + ")",
                                        std::regex::ECMAScript | std::regex::optimize);
        patterns.push_back(std::move(pattern));
    }
}

std::string VfxNameFilter::normalize(const std::string& name) const
{
    std::string result = name;
    for (const Pattern& pattern : patterns) {
        // A name shorter than prefix and postfix together cannot match.
        if (name.size() < pattern.minimumLength || !std::regex_match(name, pattern.expression))
            continue;
        const size_t start = pattern.prefix.size();
        if (start > result.size()) {
            // Kept as it always was: the erase fails past the end.
            result.erase(start, 0);
        }
        const std::string rest = result.substr(start);
        const size_t digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
        result.erase(start, std::min(result.size() - start, digits));
    }
    return result;
}

} // namespace montala::core
