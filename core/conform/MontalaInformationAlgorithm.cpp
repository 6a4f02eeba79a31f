#include "core/conform/MontalaInformationAlgorithm.h"

#include "core/events/EventBase.h"
#include "core/conform/InformationContext.h"
#include "core/services/ProgressHandlerBase.h"
#include "core/model/Settings.h"
#include "util/Result.h"
#include "util/StringUtil.h"

namespace montala::core {

using util::Result;
using util::StringUtil;

const Settings& MontalaInformationAlgorithm::settingsOf(const InformationContext& context)
{
    if (!context.settings)
        throw Result::NotInitialized;
    return *context.settings;
}

const std::string& MontalaInformationAlgorithm::eventName(const EventBase& event, const InformationContext& context)
{
    return settingsOf(context).getMatchName() == MatchName::ClipName ? event.getClipName() : event.getRollName();
}

std::string MontalaInformationAlgorithm::translated(const char16_t* text)
{
    return StringUtil::toUtf8(StringUtil::translate(text));
}

void MontalaInformationAlgorithm::advance(ProgressHandlerBase* progress, int64_t count)
{
    if (progress)
        progress->advance(count);
}

void MontalaInformationAlgorithm::advanceAndCheck(ProgressHandlerBase* progress, int64_t count)
{
    if (!progress)
        return;
    progress->advance(count);
    if (progress->isCancelled())
        throw Result::Cancelled;
}

} // namespace montala::core
