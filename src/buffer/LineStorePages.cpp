// Pages: cold, warm, and changed.

#include "buffer/LineStoreNodes.h"
#include "platform/core/CodeUnitRuns.h"
#include "platform/core/LineBlocks.h"
#include "platform/core/TextScan.h"
#include "platform/core/Utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <iterator>

namespace tavrin {

namespace {

constexpr std::size_t blocksAtOnce = 16;

/// Looks at as many bytes as there are blocks for, the last ones padded; returns how many blocks that are.
std::size_t fillBlocks(std::span<const std::uint8_t> bytes, std::span<scan::LineBlock> blocks) {
    const char* const from = reinterpret_cast<const char*>(bytes.data());
    const std::size_t whole = std::min(blocks.size(), bytes.size() / scan::blockSize);
    scan::lineBlocks(from, blocks.first(whole));
    const std::size_t rest = bytes.size() - whole * scan::blockSize;
    if (whole == blocks.size() || rest == 0)
        return whole;
    std::array<char, scan::blockSize> padded{};
    std::memcpy(padded.data(), from + whole * scan::blockSize, rest);
    scan::lineBlocks(padded.data(), blocks.subspan(whole, 1));
    return whole + 1;
}

} // namespace

// What lines add up to

void LineStore::Sums::add(const Sums& other) {
    lines += other.lines;
    continued += other.continued;
    length += other.length;
    columns = std::max(columns, other.columns);
    for (std::size_t i = 0; i < ends.size(); ++i)
        ends[i] += other.ends[i];
}

void LineStore::Sums::add(const BufferLine& line) {
    ++lines;
    continued += line.continuesPrevious ? 1 : 0;
    length += line.length();
    columns = std::max(columns, line.columns());
    ++ends[static_cast<std::size_t>(line.lineEnd)];
}

void LineStore::Sums::add(const TextSource::Totals& totals) {
    add(Sums{totals.lines, totals.continued, totals.length, totals.columns, totals.ends});
}

// One page

std::unique_ptr<LineStore::Page> LineStore::emptyPage() {
    auto page = std::make_unique<Page>();
    page->lines = std::make_unique<PageLines>();
    return page;
}

LineStore::Page::~Page() {
    if (warm)
        warm->remove(*this);
}

void LineStore::Page::sumUp() {
    sums = {};
    for (const BufferLine& line : list())
        sums.add(line);
    note.reset();
}

// The list of warm pages

void LineStore::WarmPages::link(Page& page) {
    page.lines->older = newest_;
    page.lines->newer = nullptr;
    (newest_ ? newest_->lines->newer : oldest_) = &page;
    newest_ = &page;
}

void LineStore::WarmPages::unlink(Page& page) {
    PageLines& lines = *page.lines;
    (lines.newer ? lines.newer->lines->older : newest_) = lines.older;
    (lines.older ? lines.older->lines->newer : oldest_) = lines.newer;
}

void LineStore::WarmPages::makeNewest(Page& page) {
    if (page.warm)
        remove(page);
    if (newest_) {
        newest_->lines->readCount = static_cast<int>(newest_->lines->read.count());
        linesRead_ += newest_->lines->readCount;
    }
    link(page);
    page.warm = this;
    page.lines->read.reset();
    page.lines->readCount = 0;
}

void LineStore::WarmPages::remove(Page& page) {
    unlink(page);
    linesRead_ -= page.lines->readCount;
    page.warm = nullptr;
    if (newest_ && newest_->lines->readCount > 0) { // the one before is the newest again
        linesRead_ -= newest_->lines->readCount;
        newest_->lines->readCount = 0;
    }
}

LineStore::Page* LineStore::WarmPages::takeDispensable() {
    Page* const page = oldest_;
    if (!page || page == newest_ || linesRead_ - page->lines->readCount < warmLines)
        return nullptr;
    remove(*page);
    return page;
}

// Between cold and warm

LineStore::StoredText LineStore::storedText(const Page& page) const {
    if (!page.patches)
        return {*source_, page.place, page.sourceEnd};
    const std::size_t unit = source_->unitBytes();
    const std::size_t size = unit + page.patches->size;
    PatchedText& text = *patched_;
    if (text.id != page.patches->id) {
        text.id = 0;
        if (!text.block || text.block->size() < size)
            text.block = ByteBuffer::allocate(2 * size);
        page.patches->apply(source_->bytes(loadedFrom(page), page.sourceEnd), text.block->data() + unit);
        text.source.emplace(text.block, 0, size, source_->form(), source_->isValid());
        text.id = page.patches->id;
    }
    return {*text.source, {unit, page.place.continues}, size, page.patches->ends};
}

void LineStore::StoredReading::next(TextSource::Line& line) {
    if (ends_.empty()) {
        source_.next(place_, line);
        return;
    }
    line = source_.lineWithin(place_.offset, start_ + ends_.front());
    line.continues = place_.continues;
    place_ = {start_ + ends_.front(), line.lineEnd == LineEnd::None};
    ends_ = ends_.subspan(1);
}

/// The lines of a page that mirrors a text.
std::unique_ptr<LineStore::PageLines> LineStore::readLines(const Page& page) const {
    auto lines = std::make_unique<PageLines>();
    lines->list.reserve(static_cast<std::size_t>(page.lineCount()));
    const StoredText stored = storedText(page);
    const TextSource& source = stored.source;
    const auto bytes = source.bytes(stored.place.offset, stored.end);
    if (source.needsDecoding() || page.patches) // lines outlive the patched text
        lines->text.reset(new char16_t[bytes.size() / source.unitBytes() + TextSource::pairRoom]);
    const bool unitsAreBytes = source.form() == TextSource::Form::Latin1 ||
                               (source.form() == TextSource::Form::Utf8 && source.isValid() &&
                                storedUnitCount(page) == static_cast<std::int64_t>(bytes.size()));
    if (unitsAreBytes) {
        widenLatin1(bytes.data(), bytes.size(), lines->text.get());
        lines->block = {lines->text.get(), bytes.size()};
    } else if (page.patches && !source.needsDecoding()) {
        std::memcpy(lines->text.get(), bytes.data(), bytes.size());
        lines->block = {lines->text.get(), bytes.size() / source.unitBytes()};
    }
    const bool isPlain = endedBy(page, LineEnd::Cr) == 0 && !page.hasOddBreak && !hasCuts(page);
    if (unitsAreBytes && isPlain && !page.patches)
        readPlainLines(page, *lines);
    else
        readAnyLines(page, stored, *lines);
    for (std::size_t i = 0; page.dropped.any() && i < lines->list.size(); ++i)
        lines->list[i].formatsDropped = page.dropped.test(i);
    return lines;
}

/// Lines of one code unit a byte, which end with LF or CR LF.
void LineStore::readPlainLines(const Page& page, PageLines& lines) const {
    const std::u16string_view block = lines.block;
    const auto bytes = source_->bytes(page.place.offset, page.sourceEnd);
    TextSource::Line line;
    std::size_t begin = 0;
    const auto add = [&](std::size_t end, std::size_t after, LineEnd lineEnd) {
        line.lineEnd = lineEnd;
        lines.list.emplace_back(block.substr(begin, end - begin), line, page.place.offset + begin);
        begin = after;
        line.tabs = 0;
    };
    std::array<scan::LineBlock, blocksAtOnce> blocks;
    for (std::size_t at = 0; at < bytes.size(); at += blocks.size() * scan::blockSize) {
        const std::size_t count = fillBlocks(bytes.subspan(at), blocks);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t start = at + i * scan::blockSize;
            std::uint64_t tabs = blocks[i].tabs;
            for (std::uint64_t feeds = blocks[i].feeds; feeds; feeds &= feeds - 1) {
                const std::uint64_t before = (feeds & (0 - feeds)) - 1;
                const std::size_t feed = start + static_cast<std::size_t>(std::countr_zero(feeds));
                for (; tabs & before; tabs &= tabs - 1)
                    ++line.tabs;
                const bool isCrLf = feed > begin && bytes[feed - 1] == '\r';
                add(isCrLf ? feed - 1 : feed, feed + 1, isCrLf ? LineEnd::CrLf : LineEnd::Lf);
            }
            for (; tabs; tabs &= tabs - 1)
                ++line.tabs;
        }
    }
    if (begin < bytes.size())
        add(bytes.size(), bytes.size(), LineEnd::None);
}

/// With their texts in the block, where there is one; else it is made of what is decoded.
void LineStore::readAnyLines(const Page& page, const StoredText& stored, PageLines& lines) const {
    const TextSource& source = stored.source;
    char16_t* room = lines.text.get();
    StoredReading reading(stored);
    TextSource::Place loadedPlace = page.place;
    TextSource::Line line;
    TextSource::Line loaded;
    auto patch = page.patches ? page.patches->list.begin() : std::vector<Patches::Patch>::iterator();
    for (int i = 0; i < page.lineCount(); ++i) {
        std::size_t begin = reading.offset();
        reading.next(line);
        if (page.patches) {
            const bool isPatched = patch != page.patches->list.end() && patch->line == i;
            begin = isPatched ? BufferLine::notLoaded : loadedPlace.offset;
            patch += isPatched ? 1 : 0;
            source_->next(loadedPlace, loaded);
        }
        const std::u16string_view text =
            lines.block.empty() ? source.text(line, room)
                                : lines.block.substr((line.begin - stored.place.offset) / source.unitBytes(),
                                                     static_cast<std::size_t>(line.units));
        lines.list.emplace_back(text, line, begin);
    }
    if (!lines.block.empty() || lines.list.empty())
        return;
    const char16_t* const first = lines.list.front().text().data();
    const std::u16string_view last = lines.list.back().text();
    lines.block = {first, static_cast<std::size_t>(last.data() + last.size() - first)};
}

void LineStore::coolDown() const {
    while (Page* page = warm_->takeDispensable())
        makeCold(*page);
}

void LineStore::makeCold(Page& page) const {
    if (!page.lines)
        return;
    if (page.warm)
        page.warm->remove(page);
    for (std::size_t i = 0; i < page.list().size(); ++i) {
        const BufferLine& line = page.list()[i];
        page.dropped[i] = line.formatsDropped || line.formats.mayHaveRuns();
    }
    page.lines.reset();
}

void LineStore::detach(Page& page) const {
    if (!page.mirrors)
        return;
    if (!page.lines)
        page.lines = readLines(page);
    if (page.warm)
        page.warm->remove(page);
    page.mirrors = false;
    page.patches.reset();
    ++changedPages_;
    for (BufferLine& line : page.list()) { // lines that may move on take no codes from the page's room
        line.formatsDropped = line.formatsDropped || !line.formats.runs().empty();
        line.formats = {};
    }
    page.lines->codes = {};
}

/// The page is the one that is read now.
void LineStore::warmUp(Page& page) const {
    if (!page.lines)
        page.lines = readLines(page);
    warm_->makeNewest(page);
    coolDown();
}

void LineStore::setFormats(int index, std::span<const FormatRun> runs) {
    const Place place = findToRead(index);
    if (place.page->mirrors)
        place.line().formats.assign(runs, place.page->lines->codes);
    else
        place.line().formats.assign(runs);
    place.line().formatsDropped = false;
}

int LineStore::setFormatsAhead(int first, int last, const Colouring& colour) {
    const Place place = findToRead(first);
    Page& page = *place.page;
    if (!page.mirrors)
        return first;
    const int count = std::min(last - first, page.lineCount() - place.index);
    LinesAhead lines(std::span(page.list())
                         .subspan(static_cast<std::size_t>(place.index), static_cast<std::size_t>(count)),
                     page.lines->block, page.lines->codes);
    return first + static_cast<int>(colour(lines));
}

int LineStore::warmPageCount() const {
    const auto count = [](const auto& self, const Node& node) -> int {
        if (node.isPage)
            return static_cast<const Page&>(node).lines ? 1 : 0;
        int pages = 0;
        for (const Node* child : static_cast<const Inner&>(node).children)
            pages += self(self, *child);
        return pages;
    };
    return count(count, *root_);
}

// What is still as it was loaded

/// Lines of the page begin or end where a longer line was cut.
bool LineStore::hasCuts(const Page& page, const TextSource& loaded) {
    const int openAtEnd = page.sourceEnd == loaded.size() ? 1 : 0;
    return page.place.continues || page.sums.continued > 0 || endedBy(page, LineEnd::None) > openAtEnd;
}

/// Where the bytes of the page begin when its lines are what lies between breaks and cuts.
std::optional<std::size_t> LineStore::storedFrom(const Page& page, const TextSource& loaded) {
    if (!page.mirrors || page.hasOddBreak)
        return {};
    return page.patches ? loaded.unitBytes() : loadedFrom(page, loaded);
}

std::size_t LineStore::loadedFrom(const Page& page, const TextSource& loaded) {
    if (page.place.offset > 0)
        return page.place.offset;
    TextSource::Place place; // a mark at the start is no part of the text
    TextSource::Line line;
    loaded.next(place, line);
    return line.begin;
}

bool LineStore::hasCuts(const Page& page) const {
    return hasCuts(page, *source_);
}

/// Where the lines of a page with cuts end behind their breaks, in bytes of its text; nothing when a cut
/// divides a pair.
std::optional<std::vector<std::uint32_t>> LineStore::lineEnds(const Page& page) const {
    if (page.patches)
        return page.patches->ends;
    std::vector<std::uint32_t> ends;
    ends.reserve(static_cast<std::size_t>(page.lineCount()));
    const std::size_t from = loadedFrom(page);
    TextSource::Place place = page.place;
    TextSource::Line line;
    while (static_cast<int>(ends.size()) < page.lineCount()) {
        source_->next(place, line);
        if (line.startsInPair || line.endsInPair)
            return {};
        ends.push_back(static_cast<std::uint32_t>(place.offset - from));
    }
    return ends;
}

std::optional<std::size_t> LineStore::storedFrom(const Page& page) const {
    return page.mirrors ? storedFrom(page, *source_) : std::nullopt;
}

std::size_t LineStore::loadedFrom(const Page& page) const {
    return loadedFrom(page, *source_);
}

int LineStore::endedBy(const Page& page, LineEnd end) {
    return page.sums.ends[static_cast<std::size_t>(end)];
}

std::int64_t LineStore::storedUnitCount(const Page& page) {
    return page.sums.length + endedBy(page, LineEnd::Lf) + endedBy(page, LineEnd::Cr) +
           2LL * endedBy(page, LineEnd::CrLf);
}

std::optional<LineStore::StoredUnits> LineStore::storedUnits(int index) const {
    const Place at = find(index);
    const Page& page = *at.page;
    const auto begin = storedFrom(page);
    if (!begin || source_->form() != TextSource::Form::Utf16 || hasCuts(page))
        return {};
    const StoredText stored = storedText(page);
    const auto bytes = stored.source.bytes(*begin, stored.end);
    const int first = index - at.index;
    return StoredUnits{first,
                       first + page.lineCount(),
                       {reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / sizeof(char16_t)},
                       endedBy(page, LineEnd::Cr) > 0};
}

std::optional<LineStore::StoredLines> LineStore::storedLines(int index) const {
    const Place at = find(index);
    const Page& page = *at.page;
    if (!page.mirrors)
        return {};
    return storedLines(page, *source_, storedText(page), index - at.index);
}

/// `loaded`: the text of which `stored`, patched or not, is the part in which the page lies.
std::optional<LineStore::StoredLines> LineStore::storedLines(const Page& page, const TextSource& loaded,
                                                             const StoredText& stored, int first) {
    const auto begin = storedFrom(page, loaded);
    if (!begin || loaded.form() == TextSource::Form::Utf16)
        return {};
    const auto bytes = stored.source.bytes(*begin, stored.end);
    const bool isUtf8 = loaded.form() == TextSource::Form::Utf8 && loaded.isValid();
    const bool isAscii = isUtf8 && storedUnitCount(page) == static_cast<std::int64_t>(bytes.size());
    const bool isCut = hasCuts(page, loaded);
    if (isCut && !isAscii)
        return {};
    return StoredLines{first,
                       first + page.lineCount(),
                       {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                       isAscii,
                       isUtf8,
                       isAscii || loaded.form() == TextSource::Form::Latin1,
                       endedBy(page, LineEnd::Lf) + endedBy(page, LineEnd::Cr) == 0,
                       endedBy(page, LineEnd::Cr) > 0,
                       page.patches != nullptr,
                       isCut,
                       stored.ends};
}

std::vector<std::uint32_t> LineStore::StoredLines::lineEnds() const {
    if (!patchedEnds.empty())
        return {patchedEnds.begin(), patchedEnds.end()};
    std::vector<std::uint32_t> ends;
    ends.reserve(static_cast<std::size_t>(end - first));
    for (std::size_t at = 0; at < bytes.size();) {
        const std::string_view line = bytes.substr(at, TextSource::maxLineLength);
        const std::size_t length = scan::scanByteLine(line).length;
        at += length;
        if (length < line.size())
            at += bytes.substr(at).starts_with("\r\n") ? 2 : 1;
        ends.push_back(static_cast<std::uint32_t>(at));
    }
    return ends;
}

/// Reads a loaded line of a page that is not as it was loaded.
bool LineStore::readAgain(const BufferLine& line, TextSource::Place& after, TextSource::Line& read) const {
    if (!line.isLoaded())
        return false;
    // A line that begins with the second half of a pair: no other text decoded from bytes does.
    const bool insidePair =
        source_->form() == TextSource::Form::Utf8 && line.length() > 0 && isLowSurrogate(line.text().front());
    after = source_->placeAt(line.source(), insidePair);
    return source_->next(after, read);
}

bool LineStore::loadedLine(int index, TextSource::Line& line) const {
    const Place at = find(index);
    const Page& page = *at.page;
    TextSource::Place place = page.place;
    if (!page.mirrors || page.patches)
        return readAgain(read(index), place, line);
    for (int i = 0; i <= at.index; ++i)
        source_->next(place, line);
    return true;
}

LineStore::LoadedRun LineStore::loadedRun(int index) const {
    const Place at = find(index);
    const Page& page = *at.page;
    TextSource::Place place = page.place;
    TextSource::Line read;
    if (page.patches)
        static_cast<void>(line(index)); // makes them known
    else if (page.mirrors) {
        for (int i = 0; i < at.index; ++i)
            source_->next(place, read);
        return {index - at.index + page.lineCount(), place.offset, page.sourceEnd};
    }
    LoadedRun run{index};
    for (int i = at.index; i < page.lineCount(); ++i) {
        const BufferLine& line = page.list()[static_cast<std::size_t>(i)];
        if (!line.isLoaded() || (i > at.index && line.source() != run.after))
            break;
        std::size_t after = source_->behindPlainLine(line.source(), line.length(), line.lineEnd);
        if (after == 0) {
            if (!readAgain(line, place, read) || read.lineEnd != line.lineEnd)
                break;
            after = place.offset;
        }
        if (i == at.index)
            run.begin = line.source();
        run.after = after;
        ++run.end;
    }
    return run;
}

} // namespace tavrin
