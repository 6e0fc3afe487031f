// Loading.

#include "buffer/LineScan.h"
#include "buffer/LineStoreNodes.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <system_error>
#include <utility>

namespace tavrin {

namespace {

/// Bytes in which nearly every page lies, and what has to be seen behind it.
constexpr std::size_t ordinaryReach =
    std::size_t{LineStore::pageLines} * (3 * TextSource::maxLineLength + 16) + TextSource::maxLineLength;
/// Bytes behind a break that tell how it reads: the second half of it, or a mark.
constexpr std::size_t breakReach = 4;

} // namespace

LineStore::Pages::Pages() = default;
LineStore::Pages::Pages(Pages&&) noexcept = default;
LineStore::Pages& LineStore::Pages::operator=(Pages&&) noexcept = default;
LineStore::Pages::~Pages() = default;

/// The page at `place`, which is moved behind it; null at the end of the text.
std::unique_ptr<LineStore::Page> LineStore::Pages::read(const TextSource& source,
                                                        TextSource::Place& place) const {
    auto page = std::make_unique<Page>();
    page->mirrors = true;
    page->place = place;
    const TextSource::Totals totals = source.skip(place, pageLines);
    if (totals.lines == 0)
        return {};
    page->sums.add(totals);
    page->lastLength = totals.lastLength;
    page->hasOddBreak = totals.hasOddBreak;
    page->sourceEnd = place.offset;
    page->flags.insert(0, page->sums.lines);
    page->states.insert(0, page->sums.lines);
    return page;
}

void LineStore::Pages::makeWhole(const TextSource& source) {
    if (needed_ == 0)
        needed_ = ordinaryReach;
    while (source.size() >= needed_) {
        TextSource::Place place = place_;
        std::unique_ptr<Page> page = read(source, place);
        if (!page || place.offset + breakReach > source.size()) {
            // Marks make lines of any length. Twice as much is waited for, so that a text of them costs no
            // more than a few readings.
            needed_ = place_.offset + 2 * (source.size() - place_.offset);
            return;
        }
        list_.push_back(std::move(page));
        place_ = place;
        needed_ = place_.offset + ordinaryReach;
    }
}

void LineStore::Pages::make(const TextSource& source, std::size_t end) {
    while (place_.offset < end) {
        std::unique_ptr<Page> page = read(source, place_);
        if (!page)
            return;
        list_.push_back(std::move(page));
    }
}

LineStore::Pages LineStore::Pages::takeMade() {
    Pages made;
    made.list_ = std::exchange(list_, {});
    return made;
}

void LineStore::Pages::append(Pages pages) {
    list_.insert(list_.end(), std::make_move_iterator(pages.list_.begin()),
                 std::make_move_iterator(pages.list_.end()));
}

LineStore::Pages::Scanned LineStore::Pages::scan(const LineScan& scan, const TextSource& source,
                                                 LineEndState& state) {
    std::array<std::uint8_t, pageLines> flagRoom;
    std::array<std::uint8_t, pageLines> stateRoom;
    int lines = 0;
    for (const std::unique_ptr<Node>& node : list_) {
        Page& page = static_cast<Page&>(*node);
        const auto stored = storedLines(page, source, {source, page.place, page.sourceEnd}, 0);
        if (!stored)
            return {lines, false};
        const auto flags = std::span(flagRoom).first(static_cast<std::size_t>(page.lineCount()));
        const auto states = std::span(stateRoom).first(flags.size());
        const std::optional<LineEndState> end = scan.scan(*stored, state, flags, states);
        if (!end)
            return {lines, false};
        page.flags = LineColumn(flags);
        page.states = LineColumn(states);
        state = *end;
        lines += page.lineCount();
    }
    return {lines, true};
}

void LineStore::load(std::unique_ptr<TextSource> source) {
    load(std::move(source), {});
}

void LineStore::load(std::unique_ptr<TextSource> source, Pages pages) {
    pages.make(*source, source->size());
    std::vector<std::unique_ptr<Node>> level = std::move(pages.list_);
    while (level.size() > 1) {
        std::vector<std::unique_ptr<Node>> above;
        above.reserve(level.size() / treeFanOut + 1);
        std::vector<Node*> children;
        children.reserve(treeFanOut);
        for (auto next = level.begin(); next != level.end();) {
            const auto end = level.end() - next > treeFanOut ? next + treeFanOut : level.end();
            children.clear();
            for (auto child = next; child != end; ++child)
                children.push_back(child->get());
            auto inner = std::make_unique<Inner>(children);
            inner->takeOver();
            for (; next != end; ++next)
                static_cast<void>(next->release()); // the node's by now
            above.push_back(std::move(inner));
        }
        level = std::move(above);
    }
    clear();
    source_ = std::move(source);
    if (!level.empty())
        root_ = std::move(level.front());
    total_ = root_->sums;
}

void LineStore::noteAhead(const LineScan& scan) {
    if (root_->isPage)
        return;
    NotesToMake notes;
    int line = 0;
    planNotes(scan, static_cast<Inner&>(*root_), line, notes);
    try {
        notesAhead_ = std::make_unique<NotesAhead>(std::move(notes));
    } catch (const std::system_error&) {
        // There is no thread to be had: they are made when they are asked for.
    }
}

/// `line`: the first below the node; then behind the last.
void LineStore::planNotes(const LineScan& scan, Inner& node, int& line, NotesToMake& notes) const {
    std::vector<StoredLines> pages;
    for (Node* const child : node.children) {
        if (!child->isPage) {
            planNotes(scan, static_cast<Inner&>(*child), line, notes);
            continue;
        }
        const Page& page = static_cast<Page&>(*child);
        if (const auto stored = storedLines(page, *source_, storedText(page), line))
            pages.push_back(*stored);
        line += page.lineCount();
    }
    if (pages.size() > 1 && pages.size() == node.children.size()) {
        node.noteAhead = std::make_shared<NoteAhead>(scan, std::move(pages));
        notes.push_back(node.noteAhead);
    }
}

} // namespace tavrin
