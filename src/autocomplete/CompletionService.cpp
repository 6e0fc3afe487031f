#include "autocomplete/CompletionService.h"

#include "document/TextDocument.h"
#include "parsers/TagSurroundings.h"
#include "view/CTextEditorView.h"

#include <utility>

namespace tavrin {

namespace {

std::vector<ExpandedName> expanded(std::vector<TagSurroundings::Name> names) {
    std::vector<ExpandedName> result;
    result.reserve(names.size());
    for (auto& [namespaceName, localName] : names)
        result.push_back({std::move(namespaceName), std::move(localName)});
    return result;
}

SchemaContext contextAt(CTextEditorView& view, CompletionService::Place place) {
    const Buffer& buffer = view.getDocument().getBuffer();
    const TextPos caret{view.getCurrentLine(), view.getCurrentColoumn()};
    TagSurroundings around = place == CompletionService::Place::Element ? readSurroundings(buffer, caret)
                                                                        : readBindings(buffer, caret);
    return {.bindings = std::move(around.bindings),
            .siblingsBefore = expanded(std::move(around.siblingsBefore)),
            .siblingsAfter = expanded(std::move(around.siblingsAfter)),
            .isBeforeComplete = around.isBeforeComplete,
            .isAfterComplete = around.isAfterComplete};
}

} // namespace

CompletionService::CompletionService(CTextEditorView& view, Place place) {
    if (ISchemaSource* source = view.getDocument().getSchemaSource())
        scope_.emplace(source->schemaAt(contextAt(view, place)));
}

} // namespace tavrin
