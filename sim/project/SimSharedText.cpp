#include "sim/project/SimSharedText.h"

#include <mutex>
#include <unordered_set>

namespace montala::sim {

namespace {

// The kept texts of one kind; a set of nodes, so that a text stays where it
// is as others join.
template <typename Text>
struct Kept {
    std::mutex lock;
    std::unordered_set<Text> texts;
};

template <typename Text>
Kept<Text>& kept()
{
    // Never destroyed: nodes may outlive the end of main.
    static auto* all = new Kept<Text>;
    return *all;
}

} // namespace

template <typename Text>
const Text& SharedText<Text>::none()
{
    static const Text* empty = keep(Text());
    return *empty;
}

template <typename Text>
const Text* SharedText<Text>::keep(const Text& value)
{
    Kept<Text>& store = kept<Text>();
    const std::lock_guard<std::mutex> guard(store.lock);
    return &*store.texts.insert(value).first;
}

template class SharedText<std::string>;
template class SharedText<std::u16string>;

} // namespace montala::sim
