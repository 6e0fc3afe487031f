// Pages: cold, warm, and changed.

#include "buffer/LineStoreNodes.h"
#include "platform/core/Utf8.h"

#include <algorithm>
#include <iterator>

namespace tavrin {

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
    page->lines = std::make_unique<Page::Lines>();
    page->list().reserve(pageLines);
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

void LineStore::Page::insert(int at, BufferLine line) {
    list().insert(list().begin() + at, std::move(line));
    flags.insert(at, 1);
    states.insert(at, 1);
}

void LineStore::Page::erase(int first, int last) {
    list().erase(list().begin() + first, list().begin() + last);
    flags.erase(first, last);
    states.erase(first, last);
}

void LineStore::Page::moveTail(int at, Page& to) {
    std::move(list().begin() + at, list().end(), std::back_inserter(to.list()));
    list().resize(static_cast<std::size_t>(at));
    to.lines->text = lines->text;
    to.flags = flags.cut(at);
    to.states = states.cut(at);
}

void LineStore::Page::take(Page& next) {
    std::move(next.list().begin(), next.list().end(), std::back_inserter(list()));
    flags.append(next.flags);
    states.append(next.states);
    if (!lines->text)
        lines->text = std::move(next.lines->text);
    else if (next.lines->text && next.lines->text != lines->text)
        ownText();
}

/// Copies what the lines borrow to a block of this page.
void LineStore::Page::ownText() {
    std::size_t units = 0;
    for (BufferLine& line : list())
        units += line.storage().isBorrowed() ? line.text().size() : 0;
    std::shared_ptr<char16_t[]> text(new char16_t[std::max<std::size_t>(units, 1)]);
    char16_t* next = text.get();
    for (BufferLine& line : list())
        if (line.storage().isBorrowed()) {
            char16_t* const begin = next;
            next = std::ranges::copy(line.text(), begin).out;
            line.storage().borrowFrom(begin);
        }
    lines->text = std::move(text);
}

// The list of warm pages

void LineStore::WarmPages::link(Page& page) {
    page.lines->older = newest_;
    page.lines->newer = nullptr;
    (newest_ ? newest_->lines->newer : oldest_) = &page;
    newest_ = &page;
}

void LineStore::WarmPages::unlink(Page& page) {
    Page::Lines& lines = *page.lines;
    (lines.newer ? lines.newer->lines->older : newest_) = lines.older;
    (lines.older ? lines.older->lines->newer : oldest_) = lines.newer;
}

bool LineStore::WarmPages::read(Page& page, int line) {
    Page::Lines& lines = *page.lines;
    const bool isAnother = newest_ != &page;
    if (isAnother) {
        if (page.warm)
            remove(page);
        if (newest_) {
            newest_->lines->readCount = static_cast<int>(newest_->lines->read.count());
            linesRead_ += newest_->lines->readCount;
        }
        link(page);
        page.warm = this;
        lines.read.reset();
        lines.readCount = 0;
    }
    lines.read.set(static_cast<std::size_t>(line));
    return isAnother;
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

void LineStore::warmUp(Page& page) const {
    page.lines = std::make_unique<Page::Lines>();
    page.list().reserve(static_cast<std::size_t>(page.lineCount()));
    char16_t* room = nullptr;
    if (source_->needsDecoding()) {
        const std::size_t bytes = page.sourceEnd - page.place.offset;
        page.lines->text.reset(new char16_t[bytes + TextSource::pairRoom]);
        room = page.lines->text.get();
    }
    TextSource::Place place = page.place;
    TextSource::Line line;
    for (int i = 0; i < page.lineCount(); ++i) {
        const std::size_t begin = place.offset;
        source_->next(place, line);
        page.list().emplace_back(source_->text(line, room), line, begin).formatsDropped =
            page.dropped.test(static_cast<std::size_t>(i));
    }
}

void LineStore::coolDown() const {
    while (Page* page = warm_->takeDispensable()) {
        for (std::size_t i = 0; i < page->list().size(); ++i) {
            const BufferLine& line = page->list()[i];
            page->dropped.set(i, line.formatsDropped || !line.formats.runs().empty());
        }
        page->lines.reset();
    }
}

void LineStore::detach(Page& page) const {
    if (!page.mirrors)
        return;
    if (!page.lines)
        warmUp(page);
    if (page.warm)
        page.warm->remove(page);
    page.mirrors = false;
}

BufferLine& LineStore::read(int index) const {
    const Place place = find(index);
    Page& page = *place.page;
    if (page.mirrors) {
        if (!page.lines)
            warmUp(page);
        if (warm_->read(page, place.index))
            coolDown();
    }
    return place.line();
}

int LineStore::warmPageCount() const {
    const auto count = [](const auto& self, const Node& node) -> int {
        if (node.isPage)
            return static_cast<const Page&>(node).lines ? 1 : 0;
        int pages = 0;
        for (const auto& child : static_cast<const Inner&>(node).children)
            pages += self(self, *child);
        return pages;
    };
    return count(count, *root_);
}

// What is still as it was loaded

std::optional<LineStore::StoredLines> LineStore::storedLines(int index) const {
    const Place at = find(index);
    const Page& page = *at.page;
    if (!page.mirrors || page.hasOddBreak || page.place.continues || page.sums.continued > 0 ||
        source_->form() == TextSource::Form::Utf16)
        return {};
    const auto ended = [&](LineEnd end) { return page.sums.ends[static_cast<std::size_t>(end)]; };
    if (ended(LineEnd::None) > (page.sourceEnd == source_->size() ? 1 : 0))
        return {};
    std::size_t begin = page.place.offset;
    if (begin == 0) { // a mark at the start is no part of the text
        TextSource::Place place;
        TextSource::Line line;
        source_->next(place, line);
        begin = line.begin;
    }
    const auto bytes = source_->bytes(begin, page.sourceEnd);
    const bool isUtf8 = source_->form() == TextSource::Form::Utf8 && source_->isValid();
    const std::int64_t units =
        page.sums.length + ended(LineEnd::Lf) + ended(LineEnd::Cr) + 2LL * ended(LineEnd::CrLf);
    const int first = index - at.index;
    return StoredLines{first,
                       first + page.lineCount(),
                       {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                       isUtf8 && units == static_cast<std::int64_t>(bytes.size()),
                       isUtf8,
                       ended(LineEnd::Lf) + ended(LineEnd::Cr) == 0};
}

/// Reads a loaded line of a changed page again.
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
    if (!page.mirrors)
        return readAgain(at.line(), place, line);
    for (int i = 0; i <= at.index; ++i)
        source_->next(place, line);
    return true;
}

LineStore::LoadedRun LineStore::loadedRun(int index) const {
    const Place at = find(index);
    const Page& page = *at.page;
    TextSource::Place place = page.place;
    TextSource::Line read;
    if (page.mirrors) {
        for (int i = 0; i < at.index; ++i)
            source_->next(place, read);
        return {index - at.index + page.lineCount(), place.offset, page.sourceEnd};
    }
    LoadedRun run{index};
    for (int i = at.index; i < page.lineCount(); ++i) {
        const BufferLine& line = page.list()[static_cast<std::size_t>(i)];
        if (!readAgain(line, place, read) || read.lineEnd != line.lineEnd)
            break;
        if (i == at.index)
            run.begin = line.source();
        else if (line.source() != run.after)
            break;
        run.after = place.offset;
        ++run.end;
    }
    return run;
}

} // namespace tavrin
