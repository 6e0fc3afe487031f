#pragma once

#include "platform/schema/SchemaReader.h"
#include "platform/schema/VocabularyBuilder.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// A place in a schema document.
struct SchemaPlace {
    std::string file = {};
    int line = 0;
    int column = 0;
};

/// One reading of a schema: the files that it takes in, its limits, and what there is to say of it.
class SchemaReading {
  public:
    explicit SchemaReading(const SchemaReadOptions& options);

    [[nodiscard]] const SchemaLimits& limits() const { return options_.limits; }

    // Limits. When one is reached the reason is reported once and every further answer is "no".
    [[nodiscard]] bool spendNodes(std::size_t count);
    [[nodiscard]] bool spendEntityText(std::size_t bytes);
    /// Whether there is time left and nobody asked to stop.
    [[nodiscard]] bool mayGoOn();
    void giveUp(std::string why);
    [[nodiscard]] bool gaveUp() const { return gaveUp_; }

    void report(SchemaMessage message);
    void error(const SchemaPlace& place, std::string text);
    void warning(const SchemaPlace& place, std::string text);

    /// The file that a reference stands for. When there is none, says so, and what would serve; not for a
    /// reference that can be done without.
    [[nodiscard]] std::optional<std::filesystem::path>
    locate(const SchemaReference& reference, const SchemaPlace& place, bool isDispensable = false);
    /// Completes a reference's URI.
    [[nodiscard]] static SchemaReference referenceFrom(const std::filesystem::path& base,
                                                       std::string systemId);
    /// The bytes of a file, which is noted as one of the schema's. When it can't be read, says so.
    [[nodiscard]] std::optional<std::string> load(const std::filesystem::path& file,
                                                  const SchemaPlace& from = {});

    [[nodiscard]] SchemaReadResult finish(VocabularyBuilder& builder);

  private:
    [[nodiscard]] bool isThere(const std::filesystem::path& file) const;
    /// The bytes of a file, as far as there are bytes left; else `problem` says why not.
    [[nodiscard]] std::optional<std::string> bytesOf(const std::filesystem::path& file,
                                                     std::string& problem) const;
    [[nodiscard]] bool spend(std::size_t& left, std::size_t count, std::string_view what);

    const SchemaReadOptions& options_;
    std::chrono::steady_clock::time_point deadline_;
    std::size_t bytesLeft_;
    std::size_t nodesLeft_;
    std::size_t entityTextLeft_;
    bool gaveUp_ = false;
    int unsaid_ = 0; ///< messages beyond those that are kept
    std::vector<SchemaMessage> messages_;
    std::vector<std::filesystem::path> files_;
};

/// The result of a reader's work; when memory runs out or a system call fails, a message.
[[nodiscard]] SchemaReadResult readGuarded(const std::function<SchemaReadResult()>& read);

/// A path as a file: URI with everything escaped that could mean something else, and back. What is no file:
/// URI is taken for a path as it stands.
[[nodiscard]] std::string fileUri(const std::filesystem::path& path);
[[nodiscard]] std::filesystem::path pathOfUri(std::string_view uri);
/// What a reference to another file is written as in messages: a path where it is one.
[[nodiscard]] std::string shownUri(std::string_view uri);
[[nodiscard]] bool hasScheme(std::string_view uri);

} // namespace tavrin
