#pragma once

#include "platform/schema/GuardedXml.h"

#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// Where a pattern stands: what its document can't say itself.
struct RelaxNgDocument {
    std::filesystem::path file;
    XmlDocument tree;
    std::string outerNamespace; ///< of the elements around, in the document that takes this one in
};

struct RelaxNgGrammar;

/// A pattern as it is written, an element of a schema document, and the grammar that its names refer to.
struct RelaxNgPattern {
    const _xmlNode* node = nullptr;
    RelaxNgGrammar* grammar = nullptr;
    const RelaxNgDocument* document = nullptr;

    friend auto operator<=>(const RelaxNgPattern&, const RelaxNgPattern&) = default;
};

/// What all definitions of one name (or of the start) together say: each one's patterns are a group.
struct RelaxNgDefinition {
    enum class Combine { unknown, choice, interleave };

    std::vector<RelaxNgPattern> parts = {}; ///< the define or start elements
    Combine combine = Combine::unknown;
};

struct RelaxNgGrammar {
    RelaxNgGrammar* parent = nullptr;
    std::filesystem::path file = {};                           ///< that it is written in
    std::map<std::string, RelaxNgDefinition> definitions = {}; ///< the start has an empty name
};

/// The documents of a RELAX NG schema and the grammars that they make: includes followed, overridden
/// definitions left out, definitions of one name brought together.
class RelaxNgGrammars {
  public:
    explicit RelaxNgGrammars(SchemaReading& reading) : reading_(reading) {}

    /// The pattern that the schema starts with; its node is null when there is none.
    [[nodiscard]] RelaxNgPattern open(const std::filesystem::path& file);
    /// The pattern of the document that an externalRef names. Its node is null when that can't be read, or is
    /// being read already.
    [[nodiscard]] RelaxNgPattern external(const RelaxNgPattern& reference);
    /// The start of the grammar that a grammar element makes.
    [[nodiscard]] RelaxNgGrammar& grammarOf(const RelaxNgPattern& pattern);

    [[nodiscard]] const std::deque<RelaxNgDocument>& documents() const { return documents_; }
    [[nodiscard]] static SchemaPlace placeOf(const RelaxNgPattern& pattern);

  private:
    using Names = std::set<std::string>;

    [[nodiscard]] const RelaxNgDocument* load(const std::filesystem::path& file, const SchemaPlace& from,
                                              const std::string& outerNamespace);
    [[nodiscard]] const RelaxNgDocument* loadReferenced(const RelaxNgPattern& reference);
    [[nodiscard]] bool isOpen(const std::filesystem::path& file, const RelaxNgGrammar* grammar) const;
    void collect(const RelaxNgPattern& container, const Names& overridden, int depth);
    void include(const RelaxNgPattern& element, const Names& overridden, int depth);
    void define(const RelaxNgPattern& element, const std::string& name);

    SchemaReading& reading_;
    std::deque<RelaxNgDocument> documents_;
    std::deque<RelaxNgGrammar> grammars_;
    std::map<RelaxNgPattern, RelaxNgGrammar*> byPattern_;
    std::map<RelaxNgPattern, RelaxNgPattern> external_;
    std::vector<std::filesystem::path> open_; ///< documents that are being taken in, outermost first
};

/// Whether a node is the element of RELAX NG of that name.
[[nodiscard]] bool isRelaxNg(const _xmlNode* node, std::string_view name);
/// The next element of RELAX NG among a node and its following siblings; null when there is none.
[[nodiscard]] const _xmlNode* relaxNgFrom(const _xmlNode* node);
/// The value of the ns attribute in force, an empty string when there is none.
[[nodiscard]] std::string relaxNgNamespace(const RelaxNgPattern& pattern);
/// An attribute with the spaces around it gone.
[[nodiscard]] std::string trimmedAttribute(const _xmlNode* node, const char* name);

} // namespace tavrin
