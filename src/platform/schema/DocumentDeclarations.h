#pragma once

#include "platform/schema/Vocabulary.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin {

/// What a document says at its beginning about itself and its schemas.
struct DocumentDeclarations {
    struct DocumentType {
        std::u16string rootName = {};
        std::u16string publicId = {};
        std::u16string systemId = {};
        std::u16string internalSubset = {}; ///< the text between the brackets
        std::u16string declaration = {};    ///< all of it, from "<!DOCTYPE" to ">"

        friend bool operator==(const DocumentType&, const DocumentType&) = default;
    };
    /// An <?xml-model?> instruction.
    struct Model {
        std::u16string href = {};
        std::u16string type = {};
        std::u16string schemaTypeNamespace = {};

        friend bool operator==(const Model&, const Model&) = default;
    };

    std::optional<DocumentType> documentType = {};
    std::vector<Model> models = {};
    std::optional<ExpandedName> root = {}; ///< the document element
    /// Prefix (empty: default) and namespace name of each declaration on the document element.
    std::vector<std::pair<std::u16string, std::u16string>> bindings = {};
    /// Namespace name and location of each pair of xsi:schemaLocation.
    std::vector<std::pair<std::u16string, std::u16string>> schemaLocations = {};
    std::u16string noNamespaceSchemaLocation = {};
    bool isComplete = false; ///< the text goes beyond the document element's start tag

    friend bool operator==(const DocumentDeclarations&, const DocumentDeclarations&) = default;
};

inline constexpr std::u16string_view schemaInstanceNamespace = u"http://www.w3.org/2001/XMLSchema-instance";

/// Reads prolog and start tag of the document element from the beginning of a text, which may be anything:
/// what is incomplete or no XML is passed over. Costs no more than the text's length.
[[nodiscard]] DocumentDeclarations readDeclarations(std::u16string_view beginning);

} // namespace tavrin
