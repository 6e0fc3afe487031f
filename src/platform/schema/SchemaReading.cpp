#include "platform/schema/SchemaReading.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <fstream>
#include <system_error>
#include <utility>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

/// More messages help nobody.
constexpr std::size_t maxMessages = 100;

bool isUnreserved(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || std::string_view("-._~/").find(c) < 5;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const auto lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '%' && i + 2 < text.size();
        const int high = isEscape ? hexDigit(text[i + 1]) : -1;
        const int low = isEscape ? hexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            result += text[i];
            continue;
        }
        result += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return result;
}

bool isFile(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

} // namespace

bool hasScheme(std::string_view uri) {
    const std::size_t colon = uri.find(':');
    // One letter before the colon is a drive.
    return colon != std::string_view::npos && colon > 1 && std::isalpha(static_cast<unsigned char>(uri[0])) &&
           std::ranges::all_of(uri.substr(0, colon), [](char c) {
               return std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '.' || c == '-';
           });
}

std::string fileUri(const fs::path& path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::error_code ignored;
    std::string uri = "file://";
    for (const char c : fs::absolute(path, ignored).lexically_normal().generic_string()) {
        if (isUnreserved(c)) {
            uri += c;
        } else {
            uri += '%';
            uri += digits[static_cast<unsigned char>(c) >> 4];
            uri += digits[static_cast<unsigned char>(c) & 15];
        }
    }
    return uri;
}

fs::path pathOfUri(std::string_view uri) {
    std::string_view path = uri;
    if (!path.starts_with("file:"))
        return hasScheme(path) || isFile(fs::path(path)) ? fs::path(path) : fs::path(unescaped(path));
    path.remove_prefix(5);
    if (path.starts_with("//localhost/"))
        path.remove_prefix(11);
    else if (path.starts_with("//"))
        path.remove_prefix(2);
    return unescaped(path);
}

std::string shownUri(std::string_view uri) {
    return uri.starts_with("file:") ? pathOfUri(uri).string() : std::string(uri);
}

SchemaReading::SchemaReading(const SchemaReadOptions& options)
    : options_(options),
      deadline_(std::chrono::steady_clock::now() + options.limits.time),
      bytesLeft_(options.limits.bytes),
      nodesLeft_(options.limits.nodes),
      entityTextLeft_(options.limits.entityText) {}

bool SchemaReading::spend(std::size_t& left, std::size_t count, std::string_view what) {
    if (!mayGoOn())
        return false;
    if (count > left) {
        giveUp(std::string(what));
        return false;
    }
    left -= count;
    return true;
}

bool SchemaReading::spendNodes(std::size_t count) {
    return spend(nodesLeft_, count,
                 "The schema has more than " + std::to_string(limits().nodes) +
                     " elements and declarations; the rest was not read.");
}

bool SchemaReading::spendEntityText(std::size_t bytes) {
    return spend(entityTextLeft_, bytes,
                 "The entities of the schema stand for more than " + std::to_string(limits().entityText) +
                     " bytes; the rest was not read.");
}

bool SchemaReading::mayGoOn() {
    if (gaveUp_)
        return false;
    if (options_.stop.stop_requested())
        giveUp("Reading the schema was given up.");
    else if (std::chrono::steady_clock::now() > deadline_)
        giveUp("Reading the schema took more than " + std::to_string(limits().time.count()) +
               " ms; the rest was not read.");
    return !gaveUp_;
}

void SchemaReading::giveUp(std::string why) {
    if (gaveUp_)
        return;
    gaveUp_ = true;
    messages_.push_back({.text = std::move(why)});
}

void SchemaReading::report(SchemaMessage message) {
    const auto isSame = [&](const SchemaMessage& other) {
        return other.line == message.line && other.column == message.column && other.text == message.text &&
               other.file == message.file;
    };
    if (gaveUp_ || std::ranges::any_of(messages_, isSame))
        return;
    if (messages_.size() < maxMessages)
        messages_.push_back(std::move(message));
    else
        ++unsaid_;
}

void SchemaReading::error(const SchemaPlace& place, std::string text) {
    report({SchemaMessage::Severity::error, place.file, place.line, place.column, std::move(text)});
}

void SchemaReading::warning(const SchemaPlace& place, std::string text) {
    report({SchemaMessage::Severity::warning, place.file, place.line, place.column, std::move(text)});
}

SchemaReference SchemaReading::referenceFrom(const fs::path& base, std::string systemId) {
    SchemaReference reference{.systemId = std::move(systemId)};
    if (reference.systemId.empty() || hasScheme(reference.systemId))
        reference.uri = reference.systemId;
    else
        reference.uri = fileUri(base.parent_path() / pathOfUri(reference.systemId));
    return reference;
}

namespace {

/// The catalog entry that would lead from the reference to a file.
std::string catalogEntry(const SchemaReference& reference) {
    const std::string target = "uri=\"file:///...\"/>";
    if (!reference.publicId.empty())
        return "<public publicId=\"" + reference.publicId + "\" " + target;
    if (reference.systemId.empty())
        return "<uri name=\"" + reference.namespaceName + "\" " + target;
    return "<system systemId=\"" + reference.uri + "\" " + target;
}

} // namespace

std::optional<fs::path> SchemaReading::locate(const SchemaReference& reference, const SchemaPlace& place,
                                              bool isDispensable) {
    if (options_.resolve)
        if (auto file = options_.resolve(reference))
            return file;
    const std::string_view uri = reference.uri;
    const std::string& named = reference.systemId.empty() ? reference.namespaceName : reference.systemId;
    if (!uri.empty() && (uri.starts_with("file:") || !hasScheme(uri))) {
        const fs::path path = pathOfUri(uri);
        if (isThere(path))
            return path;
        if (!isDispensable)
            error(place, "The file " + path.string() +
                             " was not found. It would be read from there, or from where a catalog entry " +
                             catalogEntry(reference) + " says.");
    } else if (!isDispensable) {
        warning(place, "\"" + named + "\" was not read: nothing is fetched from a network. A catalog entry " +
                           catalogEntry(reference) + " that names a local file would serve.");
    }
    return std::nullopt;
}

bool SchemaReading::isThere(const fs::path& file) const {
    return options_.files ? options_.files(file).has_value() : isFile(file);
}

std::optional<std::string> SchemaReading::bytesOf(const fs::path& file, std::string& problem) const {
    const auto tooLarge = [&](std::uintmax_t size) {
        problem = "it has " + std::to_string(size) + " bytes, and a schema may have " +
                  std::to_string(limits().bytes) + " in all its files.";
        return std::nullopt;
    };
    if (options_.files) {
        auto bytes = options_.files(file);
        return bytes && bytes->size() > bytesLeft_ ? tooLarge(bytes->size()) : bytes;
    }
    std::error_code status;
    const std::uintmax_t size = fs::file_size(file, status);
    if (status) {
        problem = "it can't be read.";
        return std::nullopt;
    }
    if (size > bytesLeft_)
        return tooLarge(size);
    std::string bytes(size, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), static_cast<std::streamsize>(size));
    if (!stream && !stream.eof()) {
        problem = "it can't be read.";
        return std::nullopt;
    }
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

std::optional<std::string> SchemaReading::load(const fs::path& file, const SchemaPlace& from) {
    if (!mayGoOn())
        return std::nullopt;
    const auto fail = [&](const std::string& why) {
        error(from, "The file " + file.string() + " was not read: " + why);
        return std::nullopt;
    };
    std::error_code ignored;
    if (!isThere(file))
        return fail(!options_.files && fs::exists(file, ignored) ? "it is no ordinary file."
                                                                 : "it does not exist.");
    if (std::ranges::find(files_, file) == files_.end())
        files_.push_back(file);
    if (static_cast<int>(files_.size()) > limits().files) {
        giveUp("The schema has more than " + std::to_string(limits().files) +
               " files; the rest was not read.");
        return std::nullopt;
    }
    std::string problem;
    auto bytes = bytesOf(file, problem);
    if (!bytes)
        return fail(problem);
    bytesLeft_ -= bytes->size();
    return bytes;
}

SchemaReadResult readGuarded(const std::function<SchemaReadResult()>& read) {
    try {
        return read();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        VocabularyBuilder none;
        return {none.finish(), {{.text = std::string("The schema was not read: ") + error.what()}}, {}};
    }
}

SchemaReadResult SchemaReading::finish(VocabularyBuilder& builder) {
    if (unsaid_ > 0)
        messages_.push_back({.severity = SchemaMessage::Severity::warning,
                             .text = "There are " + std::to_string(unsaid_) + " more messages."});
    auto vocabulary = builder.finish();
    if (builder.isCutShort())
        messages_.push_back({.text = "The schema allows too many combinations; some are left out."});
    return {std::move(vocabulary), std::move(messages_), std::move(files_)};
}

} // namespace tavrin
