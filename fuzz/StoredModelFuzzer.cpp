// Reads arbitrary bytes as a stored data model, as a project with a damaged
// block would. The read must end either whole or in a Result::Type with the
// model empty; a model read whole must store and read again without change.
#include "core/model/DataModel.h"
#include "core/serialize/SerializationTree.h"
#include "util/Result.h"
#include "util/StringConverter.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using namespace montala;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "StoredModelFuzzer: %s\n", what);
    std::abort();
}

bool isEmpty(const core::DataModel& model)
{
    return model.getOldList().getSize() == 0 && model.getNewList().getSize() == 0 &&
           model.getChangeList().getSize() == 0 && model.getProperties().empty() &&
           model.getVideoList().getSize() == 0;
}

std::vector<uint8_t> store(const core::DataModel& model)
{
    core::serialize::SerializationTree tree;
    tree.writeObject(model);
    return tree.getBytes();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static core::FixedFramerateProvider provider(core::Framerate(25, 0));
    static core::ScopedFramerateProvider providerScope(&provider);
    static util::StringConverter converter;
    static util::ScopedStringConverter converterScope(converter);
    // The first byte picks the project rate, so drop frame gets its share.
    if (size > 0)
        provider.setFramerate(data[0] % 2 == 0 ? core::Framerate(25, 0) : core::Framerate(30, true, 1));

    core::serialize::SerializationTree tree;
    tree.assign(data, size);
    core::DataModel model;
    try {
        tree.readObject(model);
    } catch (util::Result::Type) {
        // Cut inside the leading version, the model was never touched.
        if (size >= 4 && !isEmpty(model))
            fail("a failed read left a part of the model behind");
        return 0;
    }

    // The first store may differ from the input: old forms hold timecode
    // fields as int32 that the current form cuts to a byte, and the states
    // are worked out anew. From then on reading and storing must agree.
    std::vector<uint8_t> stored;
    try {
        stored = store(model);
    } catch (util::Result::Type) {
        fail("a model read whole could not be stored");
    }
    for (int round = 0; round < 2; ++round) {
        core::serialize::SerializationTree again;
        again.assign(stored.data(), stored.size());
        core::DataModel copy;
        try {
            again.readObject(copy);
        } catch (util::Result::Type) {
            fail("a stored model could not be read back");
        }
        if (again.getPosition() != again.getSize())
            fail("reading back left bytes over");
        std::vector<uint8_t> next = store(copy);
        if (round > 0 && next != stored)
            fail("storing a model read back is no fixed point");
        stored = std::move(next);
    }
    return 0;
}
