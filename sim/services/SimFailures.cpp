#include "sim/services/SimFailures.h"

#include <algorithm>
#include <stdexcept>

namespace montala::sim {

const std::vector<std::string_view>& SimFailures::callNames()
{
    // IProjectEdit and IRangeEdit, the changes of an IProjectObject or
    // ITrack, the project's length and IStorage::write.
    static const std::vector<std::string_view> names{
        "beginEdit",   "endEdit",         "addObject",     "removeObject",      "moveObject",  "extractRange",
        "insertClip",  "deleteRange",     "addEditStep",   "copyRangeOnTracks", "finishRange", "setAttribute",
        "removeAttribute", "setName",     "setStart",      "setEnd",            "setLength",   "setToggle",
        "setValue",    "setSegmentEnd",   "setClip",       "setProjectLength",  "write",
    };
    return names;
}

void SimFailures::check(const std::string& call)
{
    const auto& names = callNames();
    if (std::find(names.begin(), names.end(), call) == names.end())
        throw std::invalid_argument("the simulated host cannot make \"" + call + "\" fail");
}

void SimFailures::withhold(const Kelmar::FUID& iid)
{
    if (!isWithheld(iid))
        withheld.push_back(iid);
}

void SimFailures::provide(const Kelmar::FUID& iid)
{
    std::erase(withheld, iid);
}

bool SimFailures::isWithheld(const Kelmar::FUID& iid) const
{
    return std::find(withheld.begin(), withheld.end(), iid) != withheld.end();
}

void SimFailures::failCall(const std::string& call, int nth)
{
    check(call);
    if (nth < 1)
        throw std::invalid_argument("calls are counted from 1");
    armed[call].insert(callCount(call) + nth);
}

void SimFailures::failEveryCall(const std::string& call)
{
    check(call);
    always.insert(call);
}

void SimFailures::clear()
{
    withheld.clear();
    armed.clear();
    always.clear();
}

bool SimFailures::fails(std::string_view call)
{
    auto counted = counts.find(call);
    if (counted == counts.end())
        counted = counts.emplace(std::string(call), 0).first;
    const int number = ++counted->second;
    const auto numbers = armed.find(call);
    const bool fail = always.contains(call) || (numbers != armed.end() && numbers->second.erase(number) > 0);
    if (fail)
        failed.push_back(std::string(call) + " #" + std::to_string(number));
    return fail;
}

int SimFailures::callCount(std::string_view call) const
{
    const auto found = counts.find(call);
    return found == counts.end() ? 0 : found->second;
}

} // namespace montala::sim
