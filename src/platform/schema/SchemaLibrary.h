#pragma once

#include "platform/schema/EditorThread.h"
#include "platform/schema/SchemaPreferences.h"
#include "platform/schema/SchemaReader.h"
#include "platform/schema/XmlCatalog.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace tavrin {

/// A schema as it is to be read: a file, or the DTD that a document type declaration makes.
struct SchemaRequest {
    std::filesystem::path file = {};     ///< empty for a declaration
    std::u16string doctype = {};         ///< from "<!DOCTYPE" to ">"
    std::filesystem::path document = {}; ///< the document that has the declaration; empty: it has no path

    friend auto operator<=>(const SchemaRequest&, const SchemaRequest&) = default;
};

/// Reads a schema; called on the worker's thread, with the catalogs that hold then. Gives up soon after a
/// stop is asked for. What it throws becomes a message.
using SchemaLoader =
    std::function<SchemaReadResult(const SchemaRequest&, const XmlCatalog&, const std::stop_token&)>;

enum class SchemaState {
    reading, ///< for the first time
    ready,   ///< read, perhaps with messages
    failed,  ///< nothing could be read
};

/// A schema that documents share. Belongs to the editor's thread.
struct SharedSchema {
    SchemaRequest request = {};
    SchemaState state = SchemaState::reading;
    bool isBeingRead = true; ///< the first time or again
    /// What it says; never null. While a new state of its files has errors, that of the last one without.
    std::shared_ptr<const Vocabulary> vocabulary = {};
    std::vector<SchemaMessage> messages = {}; ///< of the last reading
    std::vector<std::filesystem::path> files = {};
};

/// The schemas and catalogs of a program, shared by its documents.
///
/// Each is read once, on a worker's thread, and again when one of its files has changed. Results arrive on
/// the editor's thread, which is the only one that calls this object; so what documents see changes only
/// between two pieces of the editor's work, and no query locks anything. Destruction asks the worker to stop
/// and waits for it.
class SchemaLibrary {
  public:
    struct Options {
        SchemaLoader load;
        std::vector<std::shared_ptr<const Vocabulary>> builtIn = {};
        /// The system's catalogs are asked after the user's.
        std::vector<std::filesystem::path> systemCatalogs = XmlCatalog::systemFiles();
        SchemaPreferences preferences = {};
    };

    /// `editor` outlives the library.
    SchemaLibrary(EditorThread& editor, Options options);
    ~SchemaLibrary();
    SchemaLibrary(const SchemaLibrary&) = delete;
    SchemaLibrary& operator=(const SchemaLibrary&) = delete;

    /// The schema, read from now on if nobody asked for it before; else compared with the disk. It is kept as
    /// long as somebody holds it, and the last few longer.
    [[nodiscard]] std::shared_ptr<const SharedSchema> request(const SchemaRequest& request);
    [[nodiscard]] const std::vector<std::shared_ptr<const Vocabulary>>& builtIn() const { return builtIn_; }
    /// Null while the catalogs are read for the first time.
    [[nodiscard]] const std::shared_ptr<const XmlCatalog>& catalog() const { return catalog_; }

    [[nodiscard]] const SchemaPreferences& preferences() const { return preferences_; }
    void setPreferences(SchemaPreferences preferences);

    /// Compares the catalogs with the disk.
    void checkCatalogs() { readCatalogs(true); }
    /// Compares every schema and catalog in use with the disk.
    void checkFiles();
    /// Every file that they were read from.
    [[nodiscard]] std::vector<std::filesystem::path> files() const;
    /// Nothing is being read or compared.
    [[nodiscard]] bool isIdle() const { return pending_ == 0; }

    /// What a holder wants to hear; it hears as long as it keeps the subscription.
    using Subscription = std::shared_ptr<const std::function<void()>>;
    /// `changed` is called, on the editor's thread, when a schema, the catalogs or the preferences are other
    /// than before.
    [[nodiscard]] Subscription subscribe(std::function<void()> changed);

  private:
    class Worker;
    struct Delivery;
    struct Entry;

    void read(const std::shared_ptr<Entry>& entry, bool isOnlyCheck);
    void readCatalogs(bool isOnlyCheck);
    void deliver(const std::shared_ptr<Entry>& entry, Delivery& delivery);
    static void take(Entry& entry, Delivery& delivery) noexcept;
    [[nodiscard]] static Delivery lackOfMemory(const SchemaRequest& request);
    void deliverCatalog(std::shared_ptr<const XmlCatalog> catalog);
    void notify();
    void forgetUnused();

    std::vector<std::shared_ptr<const Vocabulary>> builtIn_;
    std::vector<std::filesystem::path> systemCatalogs_;
    SchemaPreferences preferences_;
    std::shared_ptr<const XmlCatalog> catalog_;
    bool isCatalogCheckPending_ = false;
    std::map<SchemaRequest, std::shared_ptr<Entry>> entries_;
    long uses_ = 0;
    int pending_ = 0;
    std::vector<std::weak_ptr<const std::function<void()>>> subscribers_;
    std::shared_ptr<SchemaLibrary*> self_; ///< what deliveries hold weakly: they may outlive the library
    EditorThread& editor_;
    SchemaLoader load_;
    std::unique_ptr<Worker> worker_; ///< last: stops first
};

} // namespace tavrin
