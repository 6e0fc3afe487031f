#pragma once

#include "platform/schema/Vocabulary.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// Something that a reader has to say of a schema, in words.
struct SchemaMessage {
    enum class Severity { warning, error };

    Severity severity = Severity::error;
    std::string file = {}; ///< path or URI, UTF-8; empty when it is about the whole
    int line = 0;          ///< counted from 1; 0 when not known
    int column = 0;        ///< counted from 1; 0 when not known
    std::string text = {}; ///< UTF-8
};

/// What came of reading a schema. What could be read is used even if there were errors.
struct SchemaReadResult {
    std::shared_ptr<const Vocabulary> vocabulary; ///< never null; without elements when nothing could be read
    std::vector<SchemaMessage> messages;
    std::vector<std::filesystem::path> files; ///< all that were read, for noticing that one changed
};

enum class SchemaLanguage { xmlSchema, dtd, relaxNg };

/// The language of a schema document, told by its name's ending; then by its root element.
[[nodiscard]] SchemaLanguage schemaLanguageOf(const std::filesystem::path& file);

/// Another document that a schema names. Texts are UTF-8.
struct SchemaReference {
    std::string publicId = {};
    std::string systemId = {};      ///< as it is written; may be empty
    std::string uri = {};           ///< the same, absolute: resolved against the document that names it
    std::string namespaceName = {}; ///< of an import in XML Schema
};

/// The file that stands for a reference, as catalogs say; nothing when they say nothing. Called by the
/// thread that reads.
using SchemaResolver = std::function<std::optional<std::filesystem::path>(const SchemaReference&)>;

/// How much one schema may take with all that it includes. Beyond, reading ends with a message.
struct SchemaLimits {
    std::size_t bytes = 16u << 20;       ///< of all files
    std::size_t nodes = 400'000;         ///< elements, attributes and declarations of all files
    std::size_t entityText = 8u << 20;   ///< bytes that references to entities stand for
    std::size_t workMemory = 128u << 20; ///< bytes while an XML Schema is being read
    int depth = 200;                     ///< of elements and of parts of a content model in one another
    int files = 1000;
    std::chrono::milliseconds time = std::chrono::milliseconds(5'000);
};

/// The bytes of a file; nothing when there is none. For schemas and catalogs that lie elsewhere than on the
/// disk.
using SchemaFiles = std::function<std::optional<std::string>(const std::filesystem::path&)>;

struct SchemaReadOptions {
    SchemaResolver resolve = {}; ///< asked first; what it does not know is looked for as a file
    SchemaFiles files = {};      ///< in place of the disk
    SchemaLimits limits = {};
    std::stop_token stop = {}; ///< gives up soon after a stop is requested
};

// The readers. None throws anything but std::bad_alloc, none fetches anything from a network, and several may
// run at once on different threads. XML Schema is version 1.0, RELAX NG the XML syntax.

[[nodiscard]] SchemaReadResult readSchema(const std::filesystem::path& file, SchemaLanguage language,
                                          const SchemaReadOptions& options = {});
[[nodiscard]] SchemaReadResult readXmlSchema(const std::filesystem::path& file,
                                             const SchemaReadOptions& options = {});
[[nodiscard]] SchemaReadResult readDtd(const std::filesystem::path& file,
                                       const SchemaReadOptions& options = {});
[[nodiscard]] SchemaReadResult readRelaxNg(const std::filesystem::path& file,
                                           const SchemaReadOptions& options = {});
/// The DTD of a document: `doctype` is its declaration from "<!DOCTYPE" to the closing ">", with its external
/// subset (looked up from `document`, the path of the document, which need not exist) and its internal one.
/// Only the element that it names is a root. Messages without a file count lines from the declaration's
/// start.
[[nodiscard]] SchemaReadResult readDoctype(std::u16string_view doctype, const std::filesystem::path& document,
                                           const SchemaReadOptions& options = {});

} // namespace tavrin
