#include "sim/services/SimTranslationService.h"

#include "sim/services/SimHost.h"
#include "sim/session/XmlElement.h"


namespace montala::sim {

using namespace Kelmar;

tresult SimTranslationService::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<ITranslationService>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimTranslationService::translate(const String& text, String& translated)
{
    translated = text;
    if (language == "us")
        return kResultOk;
    const auto entry = entries.find(text.toUtf8());
    if (entry == entries.end())
        return kResultOk;
    const auto found = entry->second.find(language);
    if (found != entry->second.end())
        translated.assign(std::string_view(found->second));
    return kResultOk;
}

tresult SimTranslationService::loadTable(ModuleHandle module, const char8* resource, const char8* table)
{
    if (!resource || !table)
        return kInvalidArgument;
    const auto root = host->readResource(module, resource, error);
    if (!root)
        return kResultFalse;
    const XmlElement* strings = root->child("StringTable");
    if (root->name() != "Translation" || !strings) {
        error = std::string(resource) + ": no <Translation> with a <StringTable>";
        return kResultFalse;
    }
    for (const auto& entry : strings->children()) {
        const std::string* key = entry->attribute("Key");
        if (entry->name() != "String" || !key)
            continue;
        auto& languages = entries[*key];
        for (const auto& translation : entry->children())
            languages[translation->name()] = translation->text();
    }
    loaded.push_back(table);
    host->record(std::string("translation table ") + table);
    error.clear();
    return kResultOk;
}

} // namespace montala::sim
