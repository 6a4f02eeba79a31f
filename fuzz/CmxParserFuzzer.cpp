// Parses arbitrary text as a CMX EDL from memory. The reader is forgiving
// by design: whatever the text, it must end in a result code, and every
// event it keeps must be usable by the rest of the system (printing its
// timecodes, judging its states, writing its roll name). Whatever the bytes,
// the text it keeps is UTF-8 without NULs, and each line it reports lies in
// the text.
#include "core/events/EventList.h"
#include "core/fileio/CmxParser.h"
#include "core/fileio/CmxWriter.h"
#include "core/fileio/TextEncoding.h"
#include "util/Result.h"
#include "util/StringConverter.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

using namespace montala;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "CmxParserFuzzer: %s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static core::FixedFramerateProvider provider(core::Framerate(25, 0));
    static core::ScopedFramerateProvider providerScope(&provider);
    static util::StringConverter converter;
    static util::ScopedStringConverter converterScope(converter);
    const bool acceptAudio = size > 0 && (data[0] & 1) != 0;
    provider.setFramerate(size > 0 && (data[0] & 2) != 0 ? core::Framerate(30, true, 1) : core::Framerate(25, 0));

    std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
    core::EventList list(core::EventList::NewKind);
    core::Framerate suggested;
    core::fileio::CmxParser parser;
    const util::Result::Type result = parser.parseStream(stream, "fuzz.edl", list, suggested, acceptAudio);
    if (result != util::Result::Ok)
        return 0;

    size_t lineCount = 1;
    for (size_t i = 0; i < size; ++i)
        lineCount += data[i] == '\n' || data[i] == '\r';
    for (const core::fileio::LineNote& note : parser.getReport().lines) {
        if (note.line == 0 || note.line > lineCount)
            fail("a reported line number lies outside the text");
    }

    for (const core::EventPtr& event : list.getEvents()) {
        for (const std::string_view text : {std::string_view(event->getClipName()), event->getEdlText(),
                                            std::string_view(event->getRollName())}) {
            if (!core::fileio::isValidUtf8(text) || text.find('\0') != std::string_view::npos)
                fail("an event keeps text that is not UTF-8 or holds a NUL");
        }
        (void)event->getSrcIn().toString();
        (void)event->getDstOut().toString();
        (void)event->getStateText();
        const std::string roll = core::fileio::CmxWriter::formatRollName(event->getRollName());
        if (roll.empty() || roll.size() > 8)
            fail("a written roll name is not one to eight characters");
        for (char c : roll) {
            const bool allowed = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '_';
            if (!allowed)
                fail("a written roll name holds a character outside the CMX set");
        }
    }
    (void)list.countFlawedEvents();
    (void)list.getRange(core::EventList::Dst);
    list.renameBRolls();
    return 0;
}
