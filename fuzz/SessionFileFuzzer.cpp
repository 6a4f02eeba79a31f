// Reads arbitrary text as a session file of the simulated host. Whatever the
// text, reading must end in a project or in a message that names the file;
// a project that was read must write, read back, and write the same text
// again (the written form is canonical), and its summary must be made.
#include "sim/session/SessionFile.h"
#include "sim/session/SessionSummary.h"
#include "sim/services/SimHost.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace montala;

[[noreturn]] void fail(const char* what, const std::string& detail)
{
    std::fprintf(stderr, "SessionFileFuzzer: %s\n%s\n", what, detail.c_str());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    auto host = sim::SimHost::create();
    {
        std::string error;
        auto project = sim::SessionFile::read(*host, text, "fuzz.json", error);
        if (!project) {
            if (error.rfind("fuzz.json: ", 0) != 0)
                fail("a message that does not name the file", error);
        } else {
            const std::string once = sim::SessionFile::write(*project);
            auto again = sim::SessionFile::read(*host, once, "again.json", error);
            if (!again)
                fail("what was written does not read back", error + "\n" + once);
            if (sim::SessionFile::write(*again) != once)
                fail("writing what was read back gives other text", once);
            sim::SessionSummary::of(*again).describe();
        }
    }
    host->shutdown();
    return 0;
}
