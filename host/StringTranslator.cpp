#include "host/StringTranslator.h"

#include "kelmar/services/IHostServices.h"
#include "kelmar/base/IPtr.h"
#include "kelmar/services/ITranslationService.h"
#include "kelmar/base/String.h"

namespace montala::host {

StringTranslator::StringTranslator(Kelmar::IHostServices* services) : services(services) {}

std::u16string StringTranslator::translate(const std::u16string& text)
{
    if (!services)
        return text;
    // Asked for on every call rather than kept: the service belongs to the
    // host and may be gone or replaced while the translator lives.
    Kelmar::IPtr<Kelmar::ITranslationService> service;
    if (services->getService(Kelmar::ITranslationService::iid, service.putVoid()) != Kelmar::kResultOk || !service)
        return text;
    Kelmar::String translated;
    if (service->translate(Kelmar::String(std::u16string_view(text)), translated) != Kelmar::kResultOk)
        return text;
    return translated.toUtf16();
}

const char16_t* StringTranslator::translate(const char16_t* text)
{
    if (!text)
        return nullptr;
    return titles.insert(translate(std::u16string(text))).first->c_str();
}

} // namespace montala::host
