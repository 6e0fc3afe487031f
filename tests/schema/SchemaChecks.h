#pragma once

#include "platform/schema/SchemaReader.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace tavrin {

/// A folder of its own for the schemas of one test, gone with it.
class SchemaFolder {
  public:
    SchemaFolder();
    ~SchemaFolder();
    SchemaFolder(const SchemaFolder&) = delete;
    SchemaFolder& operator=(const SchemaFolder&) = delete;

    std::filesystem::path write(const std::string& name, std::string_view text) const;
    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// An element's content in the notation of DTDs: "(a, b?, (c | d)+)"; "&" between what may be interleaved,
/// "*{ns}" for wildcards ("*{!ns}" for all but that), "()" for empty, "text" in front of mixed content.
/// "not there" for an unknown element. Elements of other namespaces than their parent's show as "{ns}name".
[[nodiscard]] std::string contentOf(const Vocabulary& vocabulary, std::u16string_view namespaceName,
                                    std::u16string_view localName);
/// An element's attributes with their values: "id!=<a name> kind=a|b"; "!" for required, "^" for one with a
/// default, "<>" around descriptions.
[[nodiscard]] std::string attributesOf(const Vocabulary& vocabulary, std::u16string_view namespaceName,
                                       std::u16string_view localName);
/// Local names of the roots.
[[nodiscard]] std::string rootsOf(const Vocabulary& vocabulary);
/// The messages, a line each: "file:line:column: text", of files the last name only.
[[nodiscard]] std::string messagesOf(const SchemaReadResult& result);

} // namespace tavrin
