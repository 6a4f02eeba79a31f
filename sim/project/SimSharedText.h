#pragma once

#include <string>
#include <string_view>

namespace montala::sim {

// A text that many nodes carry alike, such as a take's name or its source
// file: each different text is kept once for the whole process, and a node
// holds only a pointer to it. A feature's session holds hundreds of
// thousands of events and points, a run makes copies of them, and most
// carry one of a few names and files. Texts are never let go of: a process
// meets few different ones.
template <typename Text>
class SharedText {
public:
    using Char = typename Text::value_type;

    SharedText() : text(&none()) {}
    SharedText(const Text& value) : text(keep(value)) {}
    SharedText(const Char* value) : text(keep(Text(value))) {}

    const Text& str() const { return *text; }
    operator const Text&() const { return *text; }
    operator std::basic_string_view<Char>() const { return *text; }

    bool empty() const { return text->empty(); }
    auto begin() const { return text->begin(); }
    auto end() const { return text->end(); }

    // Equal texts are kept in one place.
    friend bool operator==(const SharedText& a, const SharedText& b) { return a.text == b.text; }
    friend bool operator==(const SharedText& a, const Text& b) { return *a.text == b; }
    friend bool operator==(const SharedText& a, const Char* b) { return *a.text == b; }

private:
    static const Text& none();
    static const Text* keep(const Text& value);

    const Text* text;
};

extern template class SharedText<std::string>;
extern template class SharedText<std::u16string>;

} // namespace montala::sim
