// Any files read as an XML Schema without harm, and what comes of them is whole.

#include "FuzzTarget.h"
#include "SchemaInput.h"

#include <xercesc/util/PlatformUtils.hpp>

using namespace tavrin;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Once, for a reading would do it anew each time and that takes longer than all else.
    [[maybe_unused]] static const bool isReady = [] {
        fuzz::forbidOtherFiles();
        xercesc::XMLPlatformUtils::Initialize();
        return true;
    }();
    const fuzz::SchemaInput input(data, size);
    fuzz::checkSchema(readXmlSchema(fuzz::SchemaInput::mainFile(), input.options()));
    return 0;
}
