#include "buffer/LineStore.h"

#include "buffer/LineStoreNodes.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace tavrin {

BufferLine& LineStore::Place::line() const {
    return page->list()[static_cast<std::size_t>(index)];
}

std::int64_t LineStore::savedLength() const {
    if (total_.lines == 0)
        return 0;
    const bool firstContinues = line(0).continuesPrevious; // no line stands before it either way
    return total_.length + 2LL * (total_.lines - 1 - total_.continued + (firstContinues ? 1 : 0));
}

// Reading

/// A reader of many lines mostly goes on in the page beside.
bool LineStore::moveHintTo(int index) const {
    if (!hint_ || !hint_->parent)
        return false;
    const auto& siblings = hint_->parent->children;
    const int behind = hintFirst_ + hint_->sums.lines;
    const bool isUp = index < hintFirst_;
    const int slot = hint_->slot + (isUp ? -1 : 1);
    if (slot < 0 || slot >= static_cast<int>(siblings.size()))
        return false;
    const int lines = siblings[static_cast<std::size_t>(slot)]->sums.lines;
    const int first = isUp ? hintFirst_ - lines : behind;
    if (index < first || index >= first + lines)
        return false;
    hint_ = static_cast<Page*>(siblings[static_cast<std::size_t>(slot)]);
    hintFirst_ = first;
    return true;
}

LineStore::Place LineStore::findInTree(int index) const {
    hintIsClear_ = false;
    if (moveHintTo(index))
        return {hint_, index - hintFirst_};
    Node* node = root_.get();
    int first = 0;
    while (!node->isPage) {
        const auto& children = static_cast<Inner*>(node)->children;
        auto child = children.begin();
        while (index - first >= (*child)->sums.lines && std::next(child) != children.end()) {
            first += (*child)->sums.lines;
            ++child;
        }
        node = *child;
    }
    hint_ = static_cast<Page*>(node);
    hintFirst_ = first;
    return {hint_, index - first};
}

const BufferLine& LineStore::line(int index) const {
    return read(index);
}

int LineStore::length(int index) const {
    const Place place = find(index);
    const bool isKnown = place.page->mirrors && place.index + 1 == place.page->lineCount();
    return isKnown ? place.page->lastLength : read(index).length();
}

bool LineStore::continuesPrevious(int index) const {
    const Place place = find(index);
    const bool isKnown = place.page->mirrors && place.index == 0;
    return isKnown ? place.page->place.continues : read(index).continuesPrevious;
}

BufferLine& LineStore::lineForFormats(int index, bool keep) {
    if (keep)
        detach(*find(index).page);
    return read(index);
}

int LineStore::flags(int index) const {
    const Place place = find(index);
    int flags = place.page->flags.at(place.index);
    for (const Node* node = place.page; node; node = node->parent)
        flags = node->pending.apply(flags);
    return flags;
}

std::uint8_t LineStore::state(int index) const {
    const Place place = find(index);
    return static_cast<std::uint8_t>(place.page->states.at(place.index));
}

void LineStore::setState(int index, std::uint8_t state) {
    const Place place = find(index);
    place.page->states.set(place.index, state);
}

LineChunk LineStore::chunkAt(int index) const {
    const Place place = find(index);
    const int first = index - place.index;
    return {first, first + place.page->sums.lines};
}

int LineStore::chunkHeightEndingWith(int index) const {
    const Place place = find(index);
    if (place.index + 1 < place.page->lineCount())
        return -1;
    int height = 0;
    const Node* node = place.page;
    for (; node->parent && node->parent->children.back() == node; node = node->parent)
        ++height;
    return height;
}

LineChunk LineStore::chunkEndingWith(int index, int height) const {
    const int end = index + 1;
    return {end - nodeOf({index, end, height}).sums.lines, end, height};
}

/// The node is told by the end of its lines.
const LineStore::Node& LineStore::nodeOf(const LineChunk& chunk) const {
    const Node* node = find(chunk.end - 1).page;
    for (int height = 0; height < chunk.height; ++height)
        node = node->parent;
    return *node;
}

ChunkNote* LineStore::chunkNote(const LineChunk& chunk) const {
    const Node& node = nodeOf(chunk);
    if (node.noteAhead) {
        node.note = node.noteAhead->take();
        node.noteAhead.reset();
    }
    return node.note.get();
}

void LineStore::setChunkNote(const LineChunk& chunk, std::unique_ptr<ChunkNote> note) const {
    const Node& node = nodeOf(chunk);
    node.forgetNote();
    node.note = std::move(note);
}

void LineStore::forgetChunkNotes() const {
    forgetNotes(*root_);
}

void LineStore::forgetNotes(const Node& node) {
    node.forgetNote();
    if (!node.isPage)
        for (const Node* child : static_cast<const Inner&>(node).children)
            forgetNotes(*child);
}

// Flags

void LineStore::pushDown(Node& node) {
    if (node.pending.isIdentity())
        return;
    if (node.isPage) {
        static_cast<Page&>(node).flags.change(0, node.sums.lines, node.pending.keep, node.pending.set);
    } else {
        for (Node* child : static_cast<Inner&>(node).children)
            child->pending.then(node.pending);
    }
    node.pending = {};
}

void LineStore::pushDownPath(Node& node) {
    if (node.parent)
        pushDownPath(*node.parent);
    pushDown(node);
}

void LineStore::clearHint() {
    pushDownPath(*hint_);
    hintIsClear_ = true;
}

void LineStore::prepareToEdit(int index) {
    detach(*descend(index).page);
}

void LineStore::setFlags(int first, int last, int value, int mask) {
    const FlagChange change{~mask, value};
    if (last == first + 1 && total_.lines > 1) {
        const Place place = descend(first);
        LineColumn& flags = place.page->flags;
        flags.set(place.index, change.apply(flags.at(place.index)));
    } else if (first < last) {
        hintIsClear_ = false;
        setFlagsIn(*root_, first, last, change);
    }
}

void LineStore::setFlagsAndState(int index, int value, int mask, std::uint8_t state) {
    const Place place = descend(index);
    LineColumn& flags = place.page->flags;
    place.page->states.set(place.index, state); // first: the flags tell that it is there
    flags.set(place.index, FlagChange{~mask, value}.apply(flags.at(place.index)));
}

void LineStore::setFlags(int first, std::span<const std::uint8_t> values, int mask) {
    const Place place = descend(first);
    place.page->flags.change(place.index, ~mask, values);
}

void LineStore::setStates(int first, std::span<const std::uint8_t> states) {
    const Place place = find(first);
    place.page->states.change(place.index, 0, states);
}

/// `first` and `last` count from the node's first line and may lie outside it.
void LineStore::setFlagsIn(Node& node, int first, int last, FlagChange change) {
    if (first <= 0 && last >= node.sums.lines) {
        node.pending.then(change);
        return;
    }
    pushDown(node);
    if (node.isPage) {
        static_cast<Page&>(node).flags.change(std::max(first, 0), std::min(last, node.sums.lines),
                                              change.keep, change.set);
        return;
    }
    for (Node* child : static_cast<Inner&>(node).children) {
        if (last <= 0)
            return;
        if (first < child->sums.lines)
            setFlagsIn(*child, first, last, change);
        first -= child->sums.lines;
        last -= child->sums.lines;
    }
}

// Changing

/// Sums of one page and of the nodes above it.
void LineStore::refresh(const Place& place) {
    place.page->sumUp();
    refreshUp(*place.page);
}

void LineStore::refreshUp(Node& node) {
    for (Inner* inner = node.parent; inner; inner = inner->parent)
        inner->sumUp();
    total_ = root_->sums;
}

// Checking

bool LineStore::readsRight(const Page& page) const {
    TextSource::Totals totals;
    const StoredText stored = storedText(page);
    StoredReading reading(stored);
    TextSource::Line line;
    for (int i = 0; i < page.lineCount(); ++i) {
        reading.next(line);
        totals.add(line);
    }
    Sums sums;
    sums.add(totals);
    return sums == page.sums && totals.lastLength == page.lastLength && reading.offset() == stored.end &&
           isLoadedBesidePatches(page);
}

/// The lines without patches read as they were loaded, and no patch takes more than a line.
bool LineStore::isLoadedBesidePatches(const Page& page) const {
    if (!page.patches)
        return true;
    const StoredText stored = storedText(page);
    StoredReading reading(stored);
    TextSource::Place loadedPlace = page.place;
    TextSource::Line line;
    TextSource::Line loaded;
    auto patch = page.patches->list.begin();
    for (int i = 0; i < page.lineCount(); ++i) {
        reading.next(line);
        source_->next(loadedPlace, loaded);
        if (line.lineEnd != loaded.lineEnd || line.continues != loaded.continues)
            return false;
        const bool isLoaded = std::ranges::equal(stored.source.bytes(line.begin, line.end),
                                                 source_->bytes(loaded.begin, loaded.end));
        const bool isPatched = patch != page.patches->list.end() && patch->line == i;
        if (isLoaded == isPatched)
            return false;
        patch += isPatched ? 1 : 0;
    }
    return loadedPlace.offset == page.sourceEnd && patch == page.patches->list.end();
}

void LineStore::checkInvariants() const {
    const auto require = [](bool holds, const char* what) {
        if (!holds)
            throw std::logic_error(what);
    };
    const auto check = [&](const auto& self, const Node& node) -> Sums {
        Sums sums;
        if (node.isPage) {
            const auto& page = static_cast<const Page&>(node);
            require(page.mirrors || page.lines, "LineStore: page without lines");
            if (page.lines)
                for (const BufferLine& line : page.list())
                    sums.add(line);
            else
                sums = node.sums;
            require(!page.mirrors || readsRight(page), "LineStore: page unlike its source");
            require(sums.lines > 0 || &node == root_.get(), "LineStore: empty page");
            require(sums.lines <= pageLines, "LineStore: page too full");
            require(page.flags.size() == sums.lines && page.states.size() == sums.lines,
                    "LineStore: wrong number of flags");
        } else {
            const auto& inner = static_cast<const Inner&>(node);
            require(!inner.children.empty(), "LineStore: node without children");
            require(static_cast<int>(inner.children.size()) <= treeFanOut, "LineStore: node too full");
            for (const Node* below : inner.children) {
                const Node& child = *below;
                require(child.parent == &inner, "LineStore: wrong link");
                sums.add(self(self, child));
            }
        }
        require(sums == node.sums, "LineStore: wrong sums");
        return sums;
    };
    require(check(check, *root_) == total_, "LineStore: wrong total");
}

} // namespace tavrin
