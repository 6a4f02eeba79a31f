#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace montala::util {

// Text in the model is UTF-8 byte text (std::string); paths and the literals
// of user-visible messages are 16-bit wide text (std::u16string).
class StringUtil {
public:
    // The process-wide converter between the two forms, and the one way to
    // the user's language. Set by whoever hosts the model; not owned.
    class StringConverterInterface {
    public:
        virtual ~StringConverterInterface() = default;
        virtual std::string toUtf8(const std::u16string& wide) = 0;
        // Throws std::range_error("bad conversion") on bytes that are not UTF-8.
        virtual std::u16string fromUtf8(const std::string& text) = 0;
        virtual std::u16string translate(const std::u16string& wide) = 0;
    };

    StringUtil() = delete;

    static void setStringConverter(StringConverterInterface* converter);
    static StringConverterInterface* getStringConverter();

    // These need the converter and throw Result::NotInitialized without one.
    static std::string toUtf8(const std::u16string& wide);
    static std::u16string fromUtf8(const std::string& text);
    static std::u16string translate(const std::u16string& wide);
    // toUtf8, then every control byte, DEL and every byte of a multi-byte
    // sequence becomes '?'.
    static std::string toSafeText(const std::u16string& wide);

    // Without the blanks, tabs and line ends at either end.
    static std::string trim(const std::string& text);
    // The same, as a view into `text`: nothing is copied.
    static std::string_view trimView(std::string_view text);
    static std::vector<std::string> split(const std::string& text, char delimiter, bool skipEmpty);
    static std::string joinInts(const std::vector<int>& values, const std::string& delimiter);
    static std::vector<int> splitInts(const std::string& text, char delimiter);
    static std::string toUpper(const std::string& text);
    // Replaces in the unchanged input; see the source for why a second hit
    // may land elsewhere when the lengths differ.
    static std::string replaceAll(const std::string& text, const std::string& search,
                                  const std::string& replacement);
    // True when the stream's lines end in a carriage return rather than "\n".
    static bool usesCarriageReturns(std::istream& stream);

    static std::u16string getFileName(const std::u16string& path);
    static std::u16string getStem(const std::u16string& path);
    static bool removeFile(const std::u16string& path);
    // The directory separator of a path: '/' only if the path holds a '/'
    // and no '\'.
    static char16_t separatorOf(const std::u16string& path);
};

} // namespace montala::util
