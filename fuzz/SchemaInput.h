#pragma once

#include "platform/schema/SchemaReader.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace tavrin::fuzz {

/// An input as the files of a schema or of catalogs, which then come from nowhere else.
///
/// The first one is "/in/main"; after each line "@@@ NAME" the file "/in/NAME" begins.
class SchemaInput {
  public:
    SchemaInput(const std::uint8_t* data, std::size_t size);

    [[nodiscard]] static std::filesystem::path mainFile() { return "/in/main"; }
    [[nodiscard]] std::string_view mainText() const { return files_.at(mainFile()); }
    /// Gives the files, of the input's lifetime.
    [[nodiscard]] SchemaFiles files() const;
    /// These files, and limits that a fuzzer has the patience for.
    [[nodiscard]] SchemaReadOptions options() const;

  private:
    std::map<std::filesystem::path, std::string> files_;
};

/// Ends the process when libxml2 is about to open a file of its own accord, or unless what was read is what
/// readers promise: a whole vocabulary, messages that are words, no files but the input's.
void forbidOtherFiles();
void checkSchema(const SchemaReadResult& read);

} // namespace tavrin::fuzz
