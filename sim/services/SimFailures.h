#pragma once

#include "kelmar/base/FUID.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace montala::sim {

// What a test makes the simulated host refuse, so that a plug-in's ways out
// of a failed host call can be run: interfaces it withholds and calls that
// fail.
//
//   host->failures().withhold(Kelmar::IRangeEdit::iid); // "no interface"
//   host->failures().failCall("deleteRange", 3);        // the 3rd call from now fails
//
// A withheld interface is answered kNoInterface by getService and by the
// queryInterface of the edit, the projects and the nodes in them, the media
// pools and the stores. A call that fails changes nothing and answers
// kResultFailed. The calls that can fail are those of callNames(); any other
// name is a mistake of the test and throws std::invalid_argument.
class SimFailures {
public:
    void withhold(const Kelmar::FUID& iid);
    // Hands the interface out again.
    void provide(const Kelmar::FUID& iid);
    bool isWithheld(const Kelmar::FUID& iid) const;

    // The nth call of `call` counted from now fails (n >= 1). Arming the
    // same call again adds another failing call.
    void failCall(const std::string& call, int nth = 1);
    // Every call of `call` from now on fails.
    void failEveryCall(const std::string& call);
    // Nothing withheld, nothing armed; the counts stay.
    void clear();

    // Counts a call of `call`; true when this one is to fail.
    bool fails(std::string_view call);
    // The calls of `call` made since the host was made.
    int callCount(std::string_view call) const;
    // The calls that failed, in order, as "deleteRange #3".
    const std::vector<std::string>& failedCalls() const { return failed; }

    static const std::vector<std::string_view>& callNames();

private:
    static void check(const std::string& call);

    std::vector<Kelmar::FUID> withheld;
    std::map<std::string, int, std::less<>> counts;
    std::map<std::string, std::set<int>, std::less<>> armed;
    std::set<std::string, std::less<>> always;
    std::vector<std::string> failed;
};

} // namespace montala::sim
