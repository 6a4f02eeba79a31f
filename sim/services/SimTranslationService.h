#pragma once

#include "kelmar/services/ITranslationService.h"
#include "sim/project/SimBase.h"

#include <map>
#include <string>
#include <vector>

namespace montala::sim {

class SimHost;

// Translates with the tables modules load from their resource folder. A
// table is read whole (every language); the language used is the
// simulator's setting ("us", "de", ...) at the time of each translation, and
// English ("us") leaves every text as it is.
//
// Table format: <Translation><LanguageTable><language key="de">German</language>
// ...</LanguageTable><StringTable><String Key="English text"><de>...</de>
// </String>...</StringTable></Translation>
class SimTranslationService : public SimBase, public Kelmar::ITranslationService {
public:
    explicit SimTranslationService(SimHost& host) : host(&host) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult translate(const Kelmar::String& text, Kelmar::String& translated) override;
    // kResultFalse when the resource is missing or is no such table.
    Kelmar::tresult loadTable(Kelmar::ModuleHandle module, const Kelmar::char8* resource,
                              const Kelmar::char8* table) override;

    void setLanguage(std::string key) { language = std::move(key); }
    const std::string& currentLanguage() const { return language; }
    // Names of the tables loaded, and why the last load failed.
    const std::vector<std::string>& tables() const { return loaded; }
    const std::string& lastError() const { return error; }

private:
    SimHost* host;
    std::string language = "us";
    // English key -> language key -> text.
    std::map<std::string, std::map<std::string, std::string>> entries;
    std::vector<std::string> loaded;
    std::string error;
};

} // namespace montala::sim
