// Replacing parts of many lines. A page that mirrors a text gets another one of the same form, which is
// summed up like a loaded one; no line of it is decoded.

#include "buffer/LineStoreNodes.h"
#include "buffer/StoredLineWalk.h"
#include "platform/core/Utf8.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

namespace tavrin {

namespace {

using Replacements = std::span<const LineReplacement>;
using Form = TextSource::Form;

/// A code unit takes no more bytes in the form.
constexpr std::size_t mostBytes(Form form) {
    return form == Form::Utf8 ? 3 : form == Form::Utf16 ? sizeof(char16_t) : 1;
}

/// What is put in the place of something, in the form of a source.
class Filler {
  public:
    /// False when the form has no such characters, or they would end a line.
    bool set(std::u16string_view text, Form form) {
        if (form == form_ && text.data() == text_.data() && text.size() == text_.size())
            return fits_;
        text_ = text;
        form_ = form;
        fits_ = text.find_first_of(u"\r\n") == text.npos && encode();
        return fits_;
    }
    [[nodiscard]] std::string_view bytes() const { return bytes_; }

  private:
    bool encode() {
        bytes_.clear();
        if (form_ == Form::Utf16) {
            bytes_.assign(reinterpret_cast<const char*>(text_.data()), text_.size() * sizeof(char16_t));
            return true;
        }
        const char16_t last = form_ == Form::Latin1 ? 0xFF : 0x7F;
        if (std::ranges::all_of(text_, [last](char16_t c) { return c <= last; })) {
            for (const char16_t c : text_)
                bytes_ += static_cast<char>(c);
            return true;
        }
        EncodeReport report;
        encodeUtf8(text_, bytes_, 0, report);
        return form_ == Form::Utf8 && report.lostCount == 0;
    }

    Form form_ = Form::Utf8;
    std::u16string_view text_;
    std::string bytes_;
    bool fits_ = true;
};

/// The index behind `count` code units from `at` on, no further than `end`; nothing inside a pair.
template <class Unit>
std::optional<std::size_t> skipUnits(std::basic_string_view<Unit> text, bool isUnitAUnit, std::size_t at,
                                     std::size_t end, int count) {
    if (isUnitAUnit)
        return at + std::min(static_cast<std::size_t>(count), end - at);
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), end);
    while (count > 0 && at < end) {
        const Utf8Character c = utf8CharacterAt(bytes.subspan(at));
        if (c.units > count)
            return {};
        count -= c.units;
        at += c.bytes;
    }
    return at;
}

using Bytes = std::span<const std::uint8_t>;

/// How many bytes the two begin with are the same.
std::size_t commonFront(Bytes a, Bytes b) {
    const std::size_t size = std::min(a.size(), b.size());
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= size; at += sizeof(std::uint64_t))
        if (std::memcmp(a.data() + at, b.data() + at, sizeof(std::uint64_t)) != 0)
            break;
    while (at < size && a[at] == b[at])
        ++at;
    return at;
}

/// How many bytes the two end with are the same.
std::size_t commonBack(Bytes a, Bytes b) {
    const std::size_t size = std::min(a.size(), b.size());
    const std::uint8_t* const aEnd = a.data() + a.size();
    const std::uint8_t* const bEnd = b.data() + b.size();
    std::size_t count = 0;
    for (; count + sizeof(std::uint64_t) <= size; count += sizeof(std::uint64_t))
        if (std::memcmp(aEnd - count - sizeof(std::uint64_t), bEnd - count - sizeof(std::uint64_t),
                        sizeof(std::uint64_t)) != 0)
            break;
    while (count < size && *(aEnd - count - 1) == *(bEnd - count - 1))
        ++count;
    return count;
}

} // namespace

void LineStore::Patches::apply(std::span<const std::uint8_t> loaded, std::uint8_t* out) const {
    const char* next = inserted.data();
    std::size_t done = 0;
    for (const Patch& patch : list) {
        out = std::copy_n(loaded.data() + done, patch.offset - done, out);
        std::memcpy(out, next, patch.inserted);
        out += patch.inserted;
        next += patch.inserted;
        done = patch.offset + patch.removed;
    }
    std::copy_n(loaded.data() + done, loaded.size() - done, out);
}

/// Other patches of a page, or those before.
class LineStore::PageChange : public LargeChange {
  public:
    PageChange(LineStore& store, int first) : store_(store), first_(first) {}

    void swap() noexcept;
    void takeBack() noexcept override { swap(); }

    std::unique_ptr<Patches> patches;
    Sums sums;
    int lastLength = 0;
    std::bitset<pageLines> dropped;

  private:
    LineStore& store_;
    int first_; ///< line of the page
};

void LineStore::PageChange::swap() noexcept {
    Page& page = *store_.find(first_).page;
    store_.makeCold(page);
    page.mirrors = true; // lines that were edited since are back as the text has them
    std::swap(page.patches, patches);
    std::swap(page.sums, sums);
    std::swap(page.lastLength, lastLength);
    std::swap(page.dropped, dropped);
    page.note.reset();
    ++store_.changedPages_;
    store_.refreshUp(page);
}

/// The text of one page with some replacements, and the patches that make it.
class LineStore::Patching {
  public:
    /// False when the form has no such text, or it would be read as other lines.
    bool write(const LineStore& store, const Page& page, int first, Replacements here);
    /// What write() has written adds up to.
    [[nodiscard]] const TextSource::Totals& totals() const { return totals_; }
    [[nodiscard]] const std::bitset<pageLines>& touched() const { return touched_; }
    /// Null when the text is as it was loaded.
    [[nodiscard]] std::unique_ptr<Patches> patches(std::uint64_t id) const;

  private:
    using Patch = Patches::Patch;

    template <class Unit>
    bool writeUnits(const LineStore& store, const Page& page, int first, Replacements here);
    void append(const void* from, std::size_t size) {
        std::memcpy(end_, from, size);
        end_ += size;
    }
    void moveEnds(int line, std::size_t from);
    void keepPatches(const Page& page, int line);
    void addPatch(const Page& page, int line, std::size_t begin, std::size_t end,
                  std::span<const std::uint8_t> made);

    Filler filler_;
    std::vector<std::uint32_t> ends_; ///< of the lines, in a page with cuts
    int endsMoved_ = 0;               ///< of them, to where they are in what is written
    SmartPtr<ByteBuffer> block_;
    std::size_t unit_ = 1;        ///< bytes of a code unit, behind which the text begins
    std::uint8_t* end_ = nullptr; ///< of what is written of the text
    TextSource::Totals totals_;
    std::bitset<pageLines> touched_;
    std::vector<Patch> list_;
    std::string inserted_;
    std::span<const std::uint8_t> loaded_;
    std::size_t known_ = 0;         ///< patches of the page that were looked at
    std::size_t knownInserted_ = 0; ///< bytes that those insert
    std::size_t knownRemoved_ = 0;
};

bool LineStore::Patching::write(const LineStore& store, const Page& page, int first, Replacements here) {
    ends_.clear();
    if (store.hasCuts(page)) {
        auto ends = store.lineEnds(page);
        if (!ends)
            return false;
        ends_ = std::move(*ends);
    }
    const StoredText stored = store.storedText(page);
    const TextSource& source = stored.source;
    unit_ = source.unitBytes();
    std::size_t room = unit_ + stored.end - stored.place.offset;
    for (const LineReplacement& replacement : here)
        room += replacement.text.size() * mostBytes(source.form());
    if (!block_ || block_->size() < room)
        block_ = ByteBuffer::allocate(2 * room);
    end_ = block_->data() + unit_;
    const bool isWritten = source.form() == Form::Utf16 ? writeUnits<char16_t>(store, page, first, here)
                                                        : writeUnits<char>(store, page, first, here);
    if (!isWritten)
        return false;
    const TextSource made(block_, 0, static_cast<std::size_t>(end_ - block_->data()), source.form(),
                          source.isValid());
    if (!ends_.empty()) {
        totals_ = {};
        StoredReading reading({made, {unit_, page.place.continues}, made.size(), ends_});
        for (TextSource::Line line; totals_.lines < page.lineCount();) {
            reading.next(line);
            totals_.add(line);
            if (line.lineEnd == LineEnd::Cr && made.startsWithFeed(reading.offset()))
                return false;
        }
        return true;
    }
    TextSource::Place place{unit_};
    totals_ = made.skip(place, page.lineCount());
    return !totals_.hasOddBreak && totals_.continued == 0 && place.offset == made.size() &&
           totals_.lines == page.lineCount() && totals_.ends == page.sums.ends;
}

template <class Unit>
bool LineStore::Patching::writeUnits(const LineStore& store, const Page& page, int first, Replacements here) {
    touched_.reset();
    endsMoved_ = 0;
    list_.clear();
    inserted_.clear();
    known_ = knownInserted_ = knownRemoved_ = 0;
    loaded_ = store.source_->bytes(store.loadedFrom(page), page.sourceEnd);
    const StoredText stored = store.storedText(page);
    const auto bytes = stored.source.bytes(*store.storedFrom(page), stored.end);
    const std::basic_string_view<Unit> text(reinterpret_cast<const Unit*>(bytes.data()),
                                            bytes.size() / sizeof(Unit));
    const bool isUnitAUnit =
        stored.source.form() != Form::Utf8 || storedUnitCount(page) == static_cast<std::int64_t>(text.size());
    const std::vector<std::uint32_t> ends = ends_;
    StoredLineWalk<Unit> walk(text, endedBy(page, LineEnd::Cr) > 0, ends);
    std::size_t done = 0;
    for (auto next = here.begin(); next != here.end();) {
        const int line = next->line - first;
        walk.goDownToLine(line);
        append(text.data() + done, (walk.begin() - done) * sizeof(Unit));
        const std::uint8_t* const begin = end_;
        done = walk.begin();
        moveEnds(line, done * sizeof(Unit));
        int col = 0; // of `done`
        for (; next != here.end() && next->line - first == line; ++next) {
            const auto from = skipUnits(text, isUnitAUnit, done, walk.end(), next->col - col);
            const auto to =
                from ? skipUnits(text, isUnitAUnit, *from, walk.end(), next->length) : std::nullopt;
            if (!to || !filler_.set(next->text, stored.source.form()))
                return false;
            append(text.data() + done, (*from - done) * sizeof(Unit));
            append(filler_.bytes().data(), filler_.bytes().size());
            done = *to;
            col = next->col + next->length;
        }
        append(text.data() + done, (walk.end() - done) * sizeof(Unit));
        done = walk.end();
        touched_.set(static_cast<std::size_t>(line));
        if (end_ - begin > UINT16_MAX)
            return false;
        addPatch(page, line, walk.begin() * sizeof(Unit), walk.end() * sizeof(Unit), {begin, end_});
    }
    append(text.data() + done, (text.size() - done) * sizeof(Unit));
    moveEnds(pageLines, text.size() * sizeof(Unit));
    keepPatches(page, pageLines);
    return true;
}

/// Those of the lines above one go as far as the byte `from`, behind which the end of what is written now is.
void LineStore::Patching::moveEnds(int line, std::size_t from) {
    const std::size_t written = static_cast<std::size_t>(end_ - block_->data()) - unit_;
    for (; endsMoved_ < std::min(line, static_cast<int>(ends_.size())); ++endsMoved_) {
        std::uint32_t& end = ends_[static_cast<std::size_t>(endsMoved_)];
        end = static_cast<std::uint32_t>(end + written - from);
    }
}

/// The page's own patches above the line stay.
void LineStore::Patching::keepPatches(const Page& page, int line) {
    if (!page.patches)
        return;
    for (; known_ < page.patches->list.size() && page.patches->list[known_].line < line; ++known_) {
        const Patch& patch = page.patches->list[known_];
        list_.push_back(patch);
        inserted_.append(page.patches->inserted, knownInserted_, patch.inserted);
        knownInserted_ += patch.inserted;
        knownRemoved_ += patch.removed;
    }
}

/// What makes `made` of the line as it was loaded. [begin, end) is the line in the page's text.
void LineStore::Patching::addPatch(const Page& page, int line, std::size_t begin, std::size_t end,
                                   std::span<const std::uint8_t> made) {
    keepPatches(page, line);
    begin = begin + knownRemoved_ - knownInserted_;
    if (page.patches && known_ < page.patches->list.size() && page.patches->list[known_].line == line) {
        knownInserted_ += page.patches->list[known_].inserted;
        knownRemoved_ += page.patches->list[known_].removed;
        ++known_;
    }
    end = end + knownRemoved_ - knownInserted_;
    const std::span<const std::uint8_t> loaded = loaded_.subspan(begin, end - begin);
    const std::size_t front = commonFront(loaded, made);
    if (front == loaded.size() && front == made.size())
        return;
    const std::size_t back = commonBack(loaded.subspan(front), made.subspan(front));
    const std::span<const std::uint8_t> inserted = made.subspan(front, made.size() - front - back);
    list_.push_back({static_cast<std::uint32_t>(begin + front),
                     static_cast<std::uint16_t>(loaded.size() - front - back),
                     static_cast<std::uint16_t>(inserted.size()), static_cast<std::uint8_t>(line)});
    inserted_.append(reinterpret_cast<const char*>(inserted.data()), inserted.size());
}

std::unique_ptr<LineStore::Patches> LineStore::Patching::patches(std::uint64_t id) const {
    if (list_.empty())
        return {};
    return std::make_unique<Patches>(
        Patches{id, static_cast<std::size_t>(end_ - block_->data()) - unit_, list_, inserted_, ends_});
}

/// Some replacements, made ready page by page.
class LineStore::Replacing {
  public:
    Replacing(LineStore& store, Replacements all) : store_(store), all_(all) {}

    void prepare();
    void apply() noexcept;

  private:
    [[nodiscard]] bool canPatch(const Page& page) const;
    bool preparePage(Page& page, int first, Replacements here);
    void prepareLines(Replacements here);

    LineStore& store_;
    Replacements all_;
    Patching patching_;
    std::vector<Change> changes_;
};

/// The page's text could be another one of the same form.
bool LineStore::Replacing::canPatch(const Page& page) const {
    return store_.storedFrom(page) && (store_.source_->form() != Form::Utf8 || store_.source_->isValid());
}

void LineStore::Replacing::prepare() {
    for (Replacements rest = all_; !rest.empty();) {
        const Place place = store_.find(rest.front().line);
        const int first = rest.front().line - place.index;
        const int end = first + place.page->lineCount();
        const auto behind = std::ranges::partition_point(
            rest, [end](const LineReplacement& replacement) { return replacement.line < end; });
        const Replacements here(rest.begin(), behind);
        rest = Replacements(behind, rest.end());
        if (!canPatch(*place.page) || !preparePage(*place.page, first, here))
            prepareLines(here);
    }
    std::vector<Change>& log = store_.log_;
    if (log.capacity() < log.size() + changes_.size())
        log.reserve(std::max(log.size() + changes_.size(), 2 * log.size()));
}

bool LineStore::Replacing::preparePage(Page& page, int first, Replacements here) {
    if (!patching_.write(store_, page, first, here))
        return false;
    auto change = std::make_unique<PageChange>(store_, first);
    change->sums.add(patching_.totals());
    change->lastLength = patching_.totals().lastLength;
    change->patches = patching_.patches(++store_.patchesMade_);
    store_.makeCold(page);
    change->dropped = page.dropped & ~patching_.touched();
    changes_.push_back({first, {}, std::move(change)});
    return true;
}

/// Makes lines of their own, in a page that is changed from now on.
void LineStore::Replacing::prepareLines(Replacements here) {
    changes_.reserve(all_.size()); // there are no more
    std::u16string made;
    for (auto next = here.begin(); next != here.end();) {
        const int index = next->line;
        store_.prepareToEdit(index);
        const BufferLine& line = store_.line(index);
        std::u16string_view rest = line.text();
        int col = 0;
        made.clear();
        for (; next != here.end() && next->line == index; ++next) {
            const auto kept = std::min(static_cast<std::size_t>(next->col - col), rest.size());
            made += rest.substr(0, kept);
            made += next->text;
            rest.remove_prefix(kept);
            rest.remove_prefix(std::min(static_cast<std::size_t>(next->length), rest.size()));
            col = next->col + next->length;
        }
        made += rest;
        changes_.push_back({index, line.withText(made), nullptr});
    }
}

void LineStore::Replacing::apply() noexcept {
    for (auto change = changes_.begin(); change != changes_.end(); ++change) {
        if (change->large) {
            static_cast<PageChange&>(*change->large).swap();
        } else {
            const Place place = store_.find(change->index);
            std::swap(place.line(), change->line);
            const auto next = std::next(change);
            if (next == changes_.end() || store_.find(next->index).page != place.page)
                store_.refresh(place);
        }
        store_.log_.push_back(std::move(*change));
    }
}

void LineStore::replace(Replacements replacements) {
    Replacing replacing(*this, replacements);
    replacing.prepare();
    replacing.apply();
}

} // namespace tavrin
