// Any files read as a RELAX NG schema without harm, and what comes of them is whole.

#include "FuzzTarget.h"
#include "SchemaInput.h"

using namespace tavrin;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    [[maybe_unused]] static const bool isReady = (fuzz::forbidOtherFiles(), true);
    const fuzz::SchemaInput input(data, size);
    fuzz::checkSchema(readRelaxNg(fuzz::SchemaInput::mainFile(), input.options()));
    return 0;
}
