// Any files read as catalogs without harm, and what they know are local files.

#include "FuzzTarget.h"
#include "SchemaInput.h"
#include "platform/schema/XmlCatalog.h"

#include <algorithm>
#include <vector>

using namespace tavrin;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    [[maybe_unused]] static const bool isReady = (fuzz::forbidOtherFiles(), true);
    const fuzz::SchemaInput input(data, size);
    const std::vector<std::filesystem::path> first = {fuzz::SchemaInput::mainFile(), "/in/next"};
    const XmlCatalog catalog(first, input.files());
    require(std::ranges::find(catalog.files(), first.front()) != catalog.files().end(),
            "a catalog that was asked for is among the files");
    for (const SchemaMessage& message : catalog.messages())
        require(!message.text.empty() && message.line >= 0, "a message says something");
    for (const char* id : {"", "a", "urn:x", "http://x/y.dtd", "-//X//DTD Y//EN", "file:///in/next"}) {
        for (const auto& found : {catalog.resolveExternal(id, ""), catalog.resolveExternal("a", id),
                                  catalog.resolveExternal(id, "urn:x"), catalog.resolveUri(id)})
            require(!found || found->is_absolute(), "what a catalog knows is a file somewhere");
    }
    return 0;
}
