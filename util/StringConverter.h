#pragma once

#include "util/StringUtil.h"

namespace montala::util {

// UTF-8 <-> UTF-16 for code points up to U+10FFFF. Translation is left to a
// derived class; this one passes text through unchanged.
class StringConverter : public StringUtil::StringConverterInterface {
public:
    std::string toUtf8(const std::u16string& wide) override;
    std::u16string fromUtf8(const std::string& text) override;
    std::u16string translate(const std::u16string& wide) override;
};

// Sets a converter for the lifetime of the scope and restores the previous
// one; for programs and tests that run the model without a host.
class ScopedStringConverter {
public:
    explicit ScopedStringConverter(StringUtil::StringConverterInterface& converter);
    ~ScopedStringConverter();
    ScopedStringConverter(const ScopedStringConverter&) = delete;
    ScopedStringConverter& operator=(const ScopedStringConverter&) = delete;

private:
    StringUtil::StringConverterInterface* previous;
};

} // namespace montala::util
