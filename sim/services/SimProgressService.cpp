#include "sim/services/SimProgressService.h"

#include "kelmar/base/String.h"

#include <string>

namespace montala::sim {

using namespace Kelmar;

namespace {

std::string utf8(const char16* text)
{
    return text ? String::utf16ToUtf8(text) : std::string("(null)");
}

} // namespace

tresult SimProgressService::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IProgressService>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimProgressService::setup(int32 mode, const char16* title, uint8* flag)
{
    log.push_back("setup " + std::to_string(mode) + " " + utf8(title) + (flag ? " cancellable" : ""));
    currentTitle = title ? title : u"";
    cancelFlag = flag;
    advanced = 0;
    cancelled = false;
    return kResultOk;
}

tresult SimProgressService::setPosition(int64 position)
{
    log.push_back("setPosition " + std::to_string(position));
    currentPosition = position;
    return kResultOk;
}

tresult SimProgressService::setTotal(int64 total)
{
    log.push_back("setTotal " + std::to_string(total));
    currentTotal = total;
    return kResultOk;
}

tresult SimProgressService::setValue(int64 value)
{
    log.push_back("setValue " + std::to_string(value));
    currentPosition = value;
    tellFace();
    return kResultOk;
}

tresult SimProgressService::setText(const char16* text)
{
    log.push_back("setText " + utf8(text));
    currentText = text ? text : u"";
    tellFace();
    return kResultOk;
}

tresult SimProgressService::advance(int64 count)
{
    // A run of advances is one line with their sum: a feature's run takes
    // millions of steps.
    const bool inRow = !log.empty() && log.size() == advanceLine;
    advanceSum = inRow ? advanceSum + count : count;
    const std::string line = "advance " + std::to_string(advanceSum);
    if (inRow)
        log.back() = line;
    else
        log.push_back(line);
    advanceLine = log.size();
    currentPosition += count;
    advanced += count;
    checkCancel();
    tellFace();
    return kResultOk;
}

tresult SimProgressService::show()
{
    log.push_back("show");
    visible = true;
    tellFace();
    return kResultOk;
}

tresult SimProgressService::hide()
{
    log.push_back("hide");
    visible = false;
    tellFace();
    return kResultOk;
}

void SimProgressService::cancel()
{
    if (cancelFlag && visible && !cancelled) {
        *cancelFlag = 1;
        cancelled = true;
    }
}

void SimProgressService::tellFace()
{
    if (face)
        face(*this);
}

void SimProgressService::checkCancel()
{
    if (cancelAt >= 0 && advanced >= cancelAt && cancelFlag && !cancelled) {
        *cancelFlag = 1;
        cancelled = true;
    }
}

} // namespace montala::sim
