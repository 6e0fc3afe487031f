#include "buffer/LineStore.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace tavrin {

namespace {

constexpr int fanOut = 32;
/// Neighbours that together hold no more than this are made one when lines are removed.
constexpr int mergedPageLines = LineStore::pageLines * 3 / 4;
constexpr int mergedChildren = fanOut * 3 / 4;

} // namespace

struct LineStore::Node {
    explicit Node(bool page) : isPage(page) {}
    virtual ~Node() = default;

    Inner* parent = nullptr;
    int slot = 0; ///< index among the parent's children
    const bool isPage;
    Sums sums;
    FlagChange pending; ///< concerns every line below, after what is pending further down
};

struct LineStore::Page : Node {
    Page() : Node(true) {}

    /// To be called after every change of the lines.
    void sumUp() {
        sums = {};
        for (const BufferLine& line : lines)
            sums.add({1, line.continuesPrevious ? 1 : 0, line.length(), line.columns()});
        note.reset();
    }

    std::vector<BufferLine> lines;
    mutable std::unique_ptr<ChunkNote> note;
};

struct LineStore::Inner : Node {
    Inner() : Node(false) { children.reserve(fanOut); }

    void adopt(int at, std::unique_ptr<Node> child) {
        children.insert(children.begin() + at, std::move(child));
        number(at);
    }
    /// Tells the children from `from` on where they are.
    void number(int from) {
        for (int i = from; i < static_cast<int>(children.size()); ++i) {
            children[i]->parent = this;
            children[i]->slot = i;
        }
    }
    void sumUp() {
        sums = {};
        for (const auto& child : children)
            sums.add(child->sums);
    }

    std::vector<std::unique_ptr<Node>> children;
};

void LineStore::Sums::add(const Sums& other) {
    lines += other.lines;
    continued += other.continued;
    length += other.length;
    columns = std::max(columns, other.columns);
}

BufferLine& LineStore::Place::line() const {
    return page->lines[static_cast<std::size_t>(index)];
}

LineStore::LineStore() : root_(std::make_unique<Page>()) {}

LineStore::~LineStore() = default;

std::int64_t LineStore::savedLength() const {
    if (total_.lines == 0)
        return 0;
    const bool firstContinues = line(0).continuesPrevious; // no line stands before it either way
    return total_.length + 2LL * (total_.lines - 1 - total_.continued + (firstContinues ? 1 : 0));
}

// Reading

LineStore::Place LineStore::find(int index) const {
    if (hint_ && index >= hintFirst_ && index < hintFirst_ + hint_->sums.lines)
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
        node = child->get();
    }
    hint_ = static_cast<Page*>(node);
    hintFirst_ = first;
    return {hint_, index - first};
}

const BufferLine& LineStore::line(int index) const {
    return find(index).line();
}

int LineStore::flags(int index) const {
    const Place place = find(index);
    int flags = place.line().flags;
    for (const Node* node = place.page; node; node = node->parent)
        flags = node->pending.apply(flags);
    return flags;
}

LineChunk LineStore::chunkAt(int index) const {
    const Place place = find(index);
    const int first = index - place.index;
    return {first, first + place.page->sums.lines};
}

const ChunkNote* LineStore::chunkNote(int index) const {
    return find(index).page->note.get();
}

void LineStore::setChunkNote(int index, std::unique_ptr<ChunkNote> note) const {
    find(index).page->note = std::move(note);
}

// Flags

void LineStore::pushDown(Node& node) {
    if (node.pending.isIdentity())
        return;
    if (node.isPage) {
        for (BufferLine& line : static_cast<Page&>(node).lines)
            line.flags = node.pending.apply(line.flags);
    } else {
        for (const auto& child : static_cast<Inner&>(node).children)
            child->pending.then(node.pending);
    }
    node.pending = {};
}

void LineStore::pushDownPath(Node& node) {
    if (node.parent)
        pushDownPath(*node.parent);
    pushDown(node);
}

LineStore::Place LineStore::descend(int index) {
    const Place place = find(index);
    pushDownPath(*place.page);
    return place;
}

void LineStore::setFlags(int first, int last, int value, int mask) {
    const FlagChange change{~mask, value};
    if (last == first + 1) {
        BufferLine& line = descend(first).line();
        line.flags = change.apply(line.flags);
    } else if (first < last) {
        setFlagsIn(*root_, first, last, change);
    }
}

/// `first` and `last` count from the node's first line and may lie outside it.
void LineStore::setFlagsIn(Node& node, int first, int last, FlagChange change) {
    if (first <= 0 && last >= node.sums.lines) {
        node.pending.then(change);
        return;
    }
    pushDown(node);
    if (node.isPage) {
        auto& lines = static_cast<Page&>(node).lines;
        for (int i = std::max(first, 0); i < std::min(last, node.sums.lines); ++i)
            lines[i].flags = change.apply(lines[i].flags);
        return;
    }
    for (const auto& child : static_cast<Inner&>(node).children) {
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

void LineStore::insert(int index, BufferLine line) {
    Place place = descend(index);
    if (static_cast<int>(place.page->lines.size()) >= pageLines) {
        splitPage(*place.page, pageLines / 2);
        forgetHint();
        place = descend(index);
    }
    place.page->lines.insert(place.page->lines.begin() + place.index, std::move(line));
    refresh(place);
}

void LineStore::insert(int index, std::vector<BufferLine> lines) {
    if (lines.size() < pageLines / 2) {
        for (BufferLine& line : lines)
            insert(index++, std::move(line));
        return;
    }
    const Place place = descend(index);
    Page* page = place.page;
    if (place.index < page->sums.lines)
        splitPage(*page, place.index);
    auto next = lines.begin();
    const auto takeChunk = [&](Page& into) {
        const auto end = lines.end() - next > pageLines ? next + pageLines : lines.end();
        into.lines.assign(std::make_move_iterator(next), std::make_move_iterator(end));
        into.sumUp();
        next = end;
    };
    if (place.index == 0) { // the split, or an empty store, left the page itself without lines
        takeChunk(*page);
        refreshUp(*page);
    }
    while (next != lines.end()) {
        auto chunk = std::make_unique<Page>();
        Page* made = chunk.get();
        takeChunk(*made);
        insertPage(*page, std::move(chunk));
        page = made;
    }
    forgetHint();
}

/// Moves the lines from `at` on into a new page behind this one.
void LineStore::splitPage(Page& page, int at) {
    auto tail = std::make_unique<Page>();
    tail->lines.reserve(pageLines);
    std::move(page.lines.begin() + at, page.lines.end(), std::back_inserter(tail->lines));
    page.lines.resize(static_cast<std::size_t>(at));
    page.sumUp();
    tail->sumUp();
    insertPage(page, std::move(tail));
}

void LineStore::insertPage(Page& after, std::unique_ptr<Page> page) {
    if (!after.parent)
        growRoot();
    insertNode(*after.parent, after.slot + 1, std::move(page));
    refreshUp(after);
}

void LineStore::insertNode(Inner& parent, int slot, std::unique_ptr<Node> node) {
    if (static_cast<int>(parent.children.size()) < fanOut) {
        parent.adopt(slot, std::move(node));
        return;
    }
    if (!parent.parent)
        growRoot();
    auto right = std::make_unique<Inner>();
    const auto middle = parent.children.begin() + fanOut / 2;
    std::move(middle, parent.children.end(), std::back_inserter(right->children));
    parent.children.erase(middle, parent.children.end());
    right->number(0);
    if (slot <= fanOut / 2)
        parent.adopt(slot, std::move(node));
    else
        right->adopt(slot - fanOut / 2, std::move(node));
    parent.sumUp();
    right->sumUp();
    insertNode(*parent.parent, parent.slot + 1, std::move(right));
}

void LineStore::growRoot() {
    auto top = std::make_unique<Inner>();
    top->adopt(0, std::move(root_));
    top->sumUp();
    root_ = std::move(top);
}

void LineStore::erase(int first, int last) {
    if (first >= last)
        return;
    forgetHint();
    eraseIn(*root_, first, last);
    while (!root_->isPage && static_cast<Inner&>(*root_).children.size() <= 1) {
        auto& children = static_cast<Inner&>(*root_).children;
        pushDown(*root_);
        std::unique_ptr<Node> only =
            children.empty() ? std::make_unique<Page>() : std::move(children.front());
        only->parent = nullptr;
        only->slot = 0;
        root_ = std::move(only);
    }
    total_ = root_->sums;
}

/// As setFlagsIn counts. Leaves no empty child behind.
void LineStore::eraseIn(Node& node, int first, int last) {
    pushDown(node);
    if (node.isPage) {
        auto& page = static_cast<Page&>(node);
        page.lines.erase(page.lines.begin() + std::max(first, 0),
                         page.lines.begin() + std::min(last, page.sums.lines));
        page.sumUp();
        return;
    }
    auto& inner = static_cast<Inner&>(node);
    std::erase_if(inner.children, [&](const std::unique_ptr<Node>& child) {
        const int lines = child->sums.lines;
        const bool all = first <= 0 && last >= lines;
        if (!all && first < lines && last > 0)
            eraseIn(*child, first, last);
        first -= lines;
        last -= lines;
        return all;
    });
    mergeSmallChildren(inner);
    inner.number(0);
    inner.sumUp();
}

void LineStore::mergeSmallChildren(Inner& node) {
    auto& children = node.children;
    for (std::size_t i = 0; i + 1 < children.size();) {
        Node& left = *children[i];
        Node& right = *children[i + 1];
        const auto merge = [&](auto& into, auto& from, int limit) {
            if (static_cast<int>(into.size() + from.size()) > limit)
                return false;
            pushDown(left);
            pushDown(right);
            std::move(from.begin(), from.end(), std::back_inserter(into));
            return true;
        };
        bool merged = false;
        if (left.isPage) {
            merged = merge(static_cast<Page&>(left).lines, static_cast<Page&>(right).lines, mergedPageLines);
            if (merged)
                static_cast<Page&>(left).note.reset();
        } else if ((merged = merge(static_cast<Inner&>(left).children, static_cast<Inner&>(right).children,
                                   mergedChildren))) {
            static_cast<Inner&>(left).number(0);
        }
        if (!merged) {
            ++i;
            continue;
        }
        left.sums.add(right.sums);
        children.erase(children.begin() + static_cast<std::ptrdiff_t>(i) + 1);
    }
}

void LineStore::clear() {
    forgetHint();
    root_ = std::make_unique<Page>();
    total_ = {};
}

void LineStore::Batch::finishPage() {
    if (page_)
        store_.refresh({page_, 0});
}

// Building

LineStore::Builder::Builder(LineStore& store) : store_(store) {}

LineStore::Builder::~Builder() = default;

void LineStore::Builder::append(const char16_t* text, std::size_t length, std::size_t tabs,
                                bool continuesPrevious) {
    if (!page_ || page_->lines.size() == pageLines) {
        auto page = std::make_unique<Page>();
        page->lines.reserve(pageLines);
        page_ = page.get();
        pages_.push_back(std::move(page));
    }
    const BufferLine& line = page_->lines.emplace_back(text, length, tabs, continuesPrevious);
    page_->sums.add({1, continuesPrevious ? 1 : 0, line.length(), line.columns()});
}

void LineStore::Builder::finish() {
    if (pages_.empty())
        return;
    std::vector<std::unique_ptr<Node>> level = std::move(pages_);
    while (level.size() > 1) {
        std::vector<std::unique_ptr<Node>> above;
        for (std::size_t i = 0; i < level.size(); i += fanOut) {
            auto inner = std::make_unique<Inner>();
            const auto end = level.begin() + static_cast<std::ptrdiff_t>(std::min(i + fanOut, level.size()));
            std::move(level.begin() + static_cast<std::ptrdiff_t>(i), end,
                      std::back_inserter(inner->children));
            inner->number(0);
            inner->sumUp();
            above.push_back(std::move(inner));
        }
        level = std::move(above);
    }
    store_.forgetHint();
    store_.root_ = std::move(level.front());
    store_.total_ = store_.root_->sums;
}

// Checking

void LineStore::checkInvariants() const {
    const auto require = [](bool holds, const char* what) {
        if (!holds)
            throw std::logic_error(what);
    };
    const auto check = [&](const auto& self, const Node& node) -> Sums {
        Sums sums;
        if (node.isPage) {
            const auto& page = static_cast<const Page&>(node);
            for (const BufferLine& line : page.lines)
                sums.add({1, line.continuesPrevious ? 1 : 0, line.length(), line.columns()});
            require(!page.lines.empty() || &node == root_.get(), "LineStore: empty page");
            require(static_cast<int>(page.lines.size()) <= pageLines, "LineStore: page too full");
        } else {
            const auto& inner = static_cast<const Inner&>(node);
            require(!inner.children.empty(), "LineStore: node without children");
            require(static_cast<int>(inner.children.size()) <= fanOut, "LineStore: node too full");
            for (int i = 0; i < static_cast<int>(inner.children.size()); ++i) {
                const Node& child = *inner.children[i];
                require(child.parent == &inner && child.slot == i, "LineStore: wrong link");
                sums.add(self(self, child));
            }
        }
        require(sums == node.sums, "LineStore: wrong sums");
        return sums;
    };
    require(check(check, *root_) == total_, "LineStore: wrong total");
}

} // namespace tavrin
