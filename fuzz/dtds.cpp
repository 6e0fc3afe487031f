// Any files read as a DTD, and any text as a document type declaration, without harm; what comes of them is
// whole.

#include "FuzzTarget.h"
#include "SchemaInput.h"
#include "platform/schema/SchemaText.h"

using namespace tavrin;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    [[maybe_unused]] static const bool isReady = (fuzz::forbidOtherFiles(), true);
    const fuzz::SchemaInput input(data, size);
    fuzz::checkSchema(readDtd(fuzz::SchemaInput::mainFile(), input.options()));
    fuzz::checkSchema(readDoctype(toUtf16(input.mainText()), "/in/document.xml", input.options()));
    return 0;
}
