#include "platform/schema/SchemaLibrary.h"

#include "platform/schema/SchemaLocation.h"
#include "platform/schema/VocabularyBuilder.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <libxml/parser.h>
#include <mutex>
#include <new>
#include <optional>
#include <thread>
#include <utility>

namespace tavrin {

namespace {

namespace fs = std::filesystem;

/// Schemas that nobody holds and that are kept all the same.
constexpr std::ptrdiff_t unusedKept = 8;

/// How a file looks from outside; a file that is not there has no size.
struct FileStamp {
    fs::path path = {};
    std::optional<std::uintmax_t> size = {};
    fs::file_time_type changed = {};

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

using FileStamps = std::vector<FileStamp>;

FileStamp stampOf(const fs::path& path) {
    FileStamp stamp{.path = path};
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error)
        return stamp;
    stamp.changed = fs::last_write_time(path, error);
    if (!error)
        stamp.size = size;
    return stamp;
}

FileStamps stampsOf(const std::vector<fs::path>& files) {
    FileStamps stamps;
    for (const fs::path& file : files)
        stamps.push_back(stampOf(file));
    return stamps;
}

bool areCurrent(const FileStamps& stamps) {
    return std::ranges::all_of(stamps, [](const FileStamp& stamp) { return stampOf(stamp.path) == stamp; });
}

bool isError(const SchemaMessage& message) {
    return message.severity == SchemaMessage::Severity::error;
}

std::shared_ptr<const Vocabulary> emptyVocabulary() {
    return VocabularyBuilder().finish();
}

} // namespace

/// A thread that runs jobs one after the other.
class SchemaLibrary::Worker {
  public:
    using Job = std::function<void(Worker&, const std::stop_token&)>;

    Worker() : thread_([this](const std::stop_token& stop) { run(stop); }) {}
    // The thread is the last member: it is told to stop and joined while the others are still there.
    ~Worker() = default;

    void add(Job job) {
        {
            const std::lock_guard lock(mutex_);
            jobs_.push_back(std::move(job));
        }
        came_.notify_one();
    }

    /// Of the worker's thread: what its latest job about catalogs has read.
    std::shared_ptr<const XmlCatalog> catalog = std::make_shared<XmlCatalog>();
    FileStamps catalogStamps = {};

  private:
    void run(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            Job job;
            {
                std::unique_lock lock(mutex_);
                if (!came_.wait(lock, stop, [this] { return !jobs_.empty(); }))
                    return;
                job = std::move(jobs_.front());
                jobs_.pop_front();
            }
            job(*this, stop);
        }
    }

    std::mutex mutex_;
    std::condition_variable_any came_;
    std::deque<Job> jobs_;
    std::jthread thread_;
};

struct SchemaLibrary::Entry {
    SharedSchema shared = {};
    FileStamps stamps = {};
    bool hasGood = false; ///< `shared.vocabulary` was read without an error
    bool isQueued = false;
    bool mustBeRead = false;    ///< once more, when what is queued has come
    bool isOutOfMemory = false; ///< at the last reading; it is read again when somebody asks
    long lastUse = 0;
};

/// What a job of the worker has found.
struct SchemaLibrary::Delivery {
    bool isUnchanged = false;
    bool isOutOfMemory = false;
    SchemaReadResult result = {};
    FileStamps stamps = {};
};

namespace {

/// The editor waits for what the worker has to tell, so it is told as soon as there is memory for that.
template <class Tell>
void surely(const Tell& tell, const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        try {
            tell();
            return;
        } catch (const std::bad_alloc&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
}

SchemaReadResult load(const SchemaLoader& loader, const SchemaRequest& request, const XmlCatalog& catalog,
                      const std::stop_token& stop) {
    SchemaReadResult result;
    try {
        result = loader(request, catalog, stop);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        result.messages.push_back({.file = pathText(request.file), .text = error.what()});
    }
    if (!result.vocabulary)
        result.vocabulary = emptyVocabulary();
    if (!request.file.empty() && std::ranges::find(result.files, request.file) == result.files.end())
        result.files.insert(result.files.begin(), request.file);
    return result;
}

} // namespace

SchemaLibrary::SchemaLibrary(EditorThread& editor, Options options)
    : builtIn_(std::move(options.builtIn)),
      systemCatalogs_(std::move(options.systemCatalogs)),
      preferences_(std::move(options.preferences)),
      self_(std::make_shared<SchemaLibrary*>(this)),
      editor_(editor),
      load_(std::move(options.load)),
      worker_(std::make_unique<Worker>()) {
    xmlInitParser(); // before more than one thread uses it
    readCatalogs(false);
}

SchemaLibrary::~SchemaLibrary() = default;

std::shared_ptr<const SharedSchema> SchemaLibrary::request(const SchemaRequest& request) {
    auto found = entries_.find(request);
    if (found == entries_.end()) {
        const auto entry = std::make_shared<Entry>();
        entry->shared.request = request;
        entry->shared.vocabulary = emptyVocabulary();
        entry->mustBeRead = true;
        found = entries_.emplace(request, entry).first;
    }
    const std::shared_ptr<Entry> entry = found->second;
    read(entry, true);
    entry->lastUse = ++uses_;
    forgetUnused();
    return {entry, &entry->shared};
}

/// Nothing has changed when there is no memory for the job; what must be read still must be.
void SchemaLibrary::read(const std::shared_ptr<Entry>& entry, bool isOnlyCheck) {
    entry->mustBeRead = entry->mustBeRead || !isOnlyCheck;
    if (entry->isQueued)
        return;
    worker_->add([this, entry, isOnlyCheck = !entry->mustBeRead && !entry->isOutOfMemory, loader = load_,
                  request = entry->shared.request, known = entry->stamps,
                  delivery = std::make_shared<Delivery>()](Worker& worker, const std::stop_token& stop) {
        bool isOutOfMemory = false;
        try {
            delivery->isUnchanged = isOnlyCheck && areCurrent(known);
            if (!delivery->isUnchanged) {
                // A change while the file is read shows at the next comparison.
                const FileStamp root = stampOf(request.file);
                delivery->result = load(loader, request, *worker.catalog, stop);
                delivery->stamps = stampsOf(delivery->result.files);
                for (FileStamp& stamp : delivery->stamps)
                    if (stamp.path == root.path)
                        stamp = root;
            }
        } catch (const std::bad_alloc&) {
            isOutOfMemory = true;
        }
        const auto deliver = [self = std::weak_ptr(self_), entry, delivery] {
            if (const auto library = self.lock())
                (*library)->deliver(entry, *delivery);
        };
        const auto tell = [&] {
            if (isOutOfMemory)
                *delivery = lackOfMemory(request);
            editor_.post(deliver);
        };
        surely(tell, stop);
    });
    entry->isQueued = true;
    entry->mustBeRead = false;
    ++pending_;
}

SchemaLibrary::Delivery SchemaLibrary::lackOfMemory(const SchemaRequest& request) {
    const SchemaMessage message{.file = pathText(request.file),
                                .text = "There was not enough memory to read the schema."};
    return {.isOutOfMemory = true, .result = {emptyVocabulary(), {message}, {request.file}}};
}

void SchemaLibrary::deliver(const std::shared_ptr<Entry>& entry, Delivery& delivery) {
    --pending_;
    entry->isQueued = false;
    // Who hears of it asks again, which must come to an end when there is no memory.
    const bool isNew = !delivery.isUnchanged && !(delivery.isOutOfMemory && entry->isOutOfMemory);
    if (!delivery.isUnchanged)
        take(*entry, delivery);
    if (entry->mustBeRead)
        read(entry, false);
    if (isNew)
        notify();
}

void SchemaLibrary::take(Entry& entry, Delivery& delivery) noexcept {
    SharedSchema& shared = entry.shared;
    const bool isGood = std::ranges::none_of(delivery.result.messages, isError);
    if (isGood || !entry.hasGood)
        shared.vocabulary = std::move(delivery.result.vocabulary);
    entry.hasGood = entry.hasGood || isGood;
    shared.state = shared.vocabulary->elementCount() > 0 || isGood ? SchemaState::ready : SchemaState::failed;
    shared.isBeingRead = false;
    shared.messages = std::move(delivery.result.messages);
    shared.files = std::move(delivery.result.files);
    entry.stamps = std::move(delivery.stamps);
    entry.isOutOfMemory = delivery.isOutOfMemory;
}

void SchemaLibrary::readCatalogs(bool isOnlyCheck) {
    if (isOnlyCheck && isCatalogCheckPending_)
        return;
    std::vector<fs::path> files = preferences_.catalogs;
    files.insert(files.end(), systemCatalogs_.begin(), systemCatalogs_.end());
    worker_->add([this, isOnlyCheck, files](Worker& worker, const std::stop_token& stop) {
        std::shared_ptr<const XmlCatalog> catalog;
        try {
            if (!isOnlyCheck || !areCurrent(worker.catalogStamps)) {
                catalog = std::make_shared<const XmlCatalog>(files);
                worker.catalogStamps = stampsOf(catalog->files());
                worker.catalog = catalog;
            }
        } catch (const std::bad_alloc&) { // the former one stays, until the files are compared again
            catalog = nullptr;
        }
        const auto deliver = [self = std::weak_ptr(self_), catalog] {
            if (const auto library = self.lock())
                (*library)->deliverCatalog(catalog);
        };
        surely([&] { editor_.post(deliver); }, stop);
    });
    isCatalogCheckPending_ = true;
    ++pending_;
}

void SchemaLibrary::deliverCatalog(std::shared_ptr<const XmlCatalog> catalog) {
    --pending_;
    isCatalogCheckPending_ = false;
    if (!catalog)
        return;
    catalog_ = std::move(catalog);
    // What could not be found may be found now.
    for (const auto& [request, entry] : entries_)
        if (!entry->shared.messages.empty())
            read(entry, false);
    notify();
}

void SchemaLibrary::setPreferences(SchemaPreferences preferences) {
    if (preferences == preferences_)
        return;
    const bool hasOtherCatalogs = preferences.catalogs != preferences_.catalogs;
    preferences_ = std::move(preferences);
    if (hasOtherCatalogs)
        readCatalogs(false);
    notify();
}

void SchemaLibrary::checkFiles() {
    readCatalogs(true);
    for (const auto& [request, entry] : entries_)
        read(entry, true);
}

std::vector<fs::path> SchemaLibrary::files() const {
    std::vector<fs::path> result;
    if (catalog_)
        result = catalog_->files();
    for (const auto& [request, entry] : entries_)
        result.insert(result.end(), entry->shared.files.begin(), entry->shared.files.end());
    std::ranges::sort(result);
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

SchemaLibrary::Subscription SchemaLibrary::subscribe(std::function<void()> changed) {
    auto subscription = std::make_shared<const std::function<void()>>(std::move(changed));
    std::erase_if(subscribers_, [](const auto& subscriber) { return subscriber.expired(); });
    subscribers_.push_back(subscription);
    return subscription;
}

void SchemaLibrary::notify() {
    const auto subscribers = subscribers_; // a subscriber may subscribe or go
    bool isOutOfMemory = false;
    for (const auto& subscriber : subscribers)
        try {
            if (const Subscription changed = subscriber.lock())
                (*changed)();
        } catch (const std::bad_alloc&) { // the others are to hear it too
            isOutOfMemory = true;
        }
    if (isOutOfMemory)
        throw std::bad_alloc();
}

void SchemaLibrary::forgetUnused() {
    std::vector<const Entry*> unused;
    for (const auto& [request, entry] : entries_)
        if (entry.use_count() == 1)
            unused.push_back(entry.get());
    if (std::ssize(unused) <= unusedKept)
        return;
    std::ranges::sort(unused, std::ranges::greater{}, &Entry::lastUse);
    const long oldestKept = unused[unusedKept - 1]->lastUse;
    std::erase_if(entries_, [&](const auto& item) {
        return item.second.use_count() == 1 && item.second->lastUse < oldestKept;
    });
}

} // namespace tavrin
