#pragma once

#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace montala::core {

// The VFX name rule: a name that reads prefix, version number, postfix is a
// version of a VFX shot, and all its versions share one match key.
//
//   prefix SH_  postfix _comp:   SH_0012_comp -> SH__comp
//                                SH_7_comp    -> SH__comp
//
// In a pattern "." stands for itself and "*" for exactly one character of
// any kind. The expressions are compiled once when the patterns are set.
//
// The digits are erased from the length of the translated prefix on, and a
// dot translates into two characters ("\."). So each dot in a prefix moves
// the erasing one character to the right and keeps a leading digit:
//
//   prefix VFX.:  VFX.0012 -> VFX.0   (not VFX.)
//
// That is how keys have always been made, and stored keys depend on it.
class VfxNameFilter {
public:
    // Replaces the patterns. A pair with both texts empty, or with a
    // character outside ".*-_", letters and digits, throws
    // Result::InvalidArgument; the pairs before it stay set.
    void setPatterns(const std::vector<std::pair<std::string, std::string>>& patterns);

    // The name with the version digits of every matching pattern removed.
    // Each pattern is tried on the unchanged name, while the erasing goes on
    // in the result. A prefix whose translation is longer than the name
    // (prefix "A.", name "A.") makes the erase fail with std::out_of_range.
    std::string normalize(const std::string& name) const;
    bool isVfxName(const std::string& name) const { return normalize(name) != name; }

    bool isEmpty() const { return patterns.empty(); }

private:
    struct Pattern {
        std::string prefix;   // translated
        std::string postfix;  // translated
        size_t minimumLength; // of a name that can match at all
        std::regex expression;
    };

    std::vector<Pattern> patterns;
};

} // namespace montala::core
