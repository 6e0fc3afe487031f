// Changes of the lines. What a change needs is made beside the tree, which may fail; putting it in place, and
// taking it back, only exchange pointers.

#include "buffer/LineStoreNodes.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace tavrin {

namespace {

constexpr int fanOut = LineStore::treeFanOut;
/// What a change leaves of less than this joins a neighbour, when both fit within the larger number.
constexpr int smallPageLines = LineStore::pageLines / 4;
constexpr int mergedPageLines = LineStore::pageLines * 3 / 4;
constexpr std::size_t smallNode = fanOut / 4;
/// The log of a command that changed no more lines keeps its room for the next one.
constexpr std::size_t keptLog = 1024;

} // namespace

// One line

void LineStore::swapLine(int index, BufferLine& line) noexcept {
    const Place place = find(index);
    std::swap(place.line(), line);
    refresh(place);
}

void LineStore::replace(int index, BufferLine line) {
    prepareToEdit(index);
    log_.push_back({index, std::move(line), nullptr});
    swapLine(index, log_.back().line);
}

/// An edit of a long line, which would take long to copy: what it changes is remembered instead.
template <class Edit>
void LineStore::editInPlace(Change change, Edit&& edit) {
    prepareToEdit(change.index);
    const Place place = find(change.index);
    log_.push_back(std::move(change));
    try {
        edit(place.line());
    } catch (...) {
        log_.pop_back();
        throw;
    }
    refresh(place);
}

void LineStore::insert(int index, int col, std::u16string_view text) {
    const auto insert = [&](BufferLine& line) { line.insert(col, text); };
    if (const BufferLine& old = line(index); !old.isLong() || old.holds(text))
        edit(index, insert);
    else
        editInPlace({.index = index, .col = col, .inserted = static_cast<int>(text.size())}, insert);
}

void LineStore::erase(int index, int col, int count) {
    const auto erase = [&](BufferLine& line) { line.erase(col, count); };
    if (const BufferLine& old = line(index); !old.isLong()) {
        edit(index, erase);
    } else {
        Change change{.index = index, .col = col};
        change.line.insert(0,
                           old.text().substr(static_cast<std::size_t>(col), static_cast<std::size_t>(count)));
        editInPlace(std::move(change), erase);
    }
}

// The tree

/// Other lines in the place of a range: the pages that it touches and the nodes above them are made anew, the
/// nodes beside them belong to the old tree and to the new one.
class LineStore::TreeChange : public LargeChange {
  public:
    explicit TreeChange(LineStore& store) : store_(store) {}
    TreeChange(const TreeChange&) = delete;
    TreeChange& operator=(const TreeChange&) = delete;
    /// Deletes what is not in the tree.
    ~TreeChange() override;

    void prepare(int first, int last, std::vector<BufferLine> lines);
    void apply() noexcept {
        exchangeRoot(newPath_);
        isApplied_ = true;
    }
    void takeBack() noexcept override {
        exchangeRoot(oldPath_);
        isApplied_ = false;
    }

  private:
    class Filling;

    Page* addPage();
    Node* addInner(std::span<Node* const> children);
    void group(const std::vector<Node*>& nodes, std::vector<Node*>& out);
    void gather(Inner& node, int begin, int end, std::vector<Node*>& out);
    void absorb(Node& sibling, bool isBefore, std::vector<Node*>& below);
    void makeTree(int begin, int end);
    void exchangeRoot(const std::vector<Inner*>& path) noexcept;

    LineStore& store_;
    Node* otherRoot_ = nullptr; ///< of the tree that is not in place
    bool isApplied_ = false;
    // Nodes of one of the trees only. The children of a path may be in both.
    std::vector<Inner*> oldPath_;
    std::vector<Node*> oldNodes_;
    std::vector<Inner*> newPath_;
    std::vector<Node*> newPages_;
};

LineStore::TreeChange::~TreeChange() {
    for (Inner* node : isApplied_ ? oldPath_ : newPath_) {
        if (node)
            node->children.clear();
        delete node;
    }
    for (const Node* node : isApplied_ ? oldNodes_ : newPages_)
        delete node;
}

void LineStore::TreeChange::exchangeRoot(const std::vector<Inner*>& path) noexcept {
    Node* const before = store_.root_.release();
    store_.root_.reset(std::exchange(otherRoot_, before));
    for (Inner* node : path)
        node->takeOver();
    store_.root_->parent = nullptr;
    store_.total_ = store_.root_->sums;
    store_.forgetHint();
    ++store_.changedPages_;
}

LineStore::Page* LineStore::TreeChange::addPage() {
    newPages_.push_back(nullptr); // so that it has an owner at once
    Page* const page = emptyPage().release();
    newPages_.back() = page;
    return page;
}

LineStore::Node* LineStore::TreeChange::addInner(std::span<Node* const> children) {
    newPath_.push_back(nullptr);
    newPath_.back() = new Inner(children);
    return newPath_.back();
}

/// Fills new pages evenly.
class LineStore::TreeChange::Filling {
  public:
    Filling(TreeChange& change, int lines)
        : change_(change), lines_(lines), pages_((lines + pageLines - 1) / pageLines) {}

    /// Copies the lines [first, last) of the store.
    void addOld(int first, int last) {
        LineStore& store = change_.store_;
        while (first < last) {
            const Place place = store.find(first);
            store.pushDownPath(*place.page);
            const std::unique_ptr<PageLines> read =
                place.page->lines ? nullptr : store.readLines(*place.page);
            const PageLines& from = read ? *read : *place.page->lines;
            const int end = std::min(place.page->lineCount(), place.index + last - first);
            for (int i = place.index; i < end; ++i) {
                BufferLine line = from.list[static_cast<std::size_t>(i)].copy();
                makeRoom();
                if (line.isBorrowed() && from.text) {
                    if (!page_->lines->text)
                        page_->lines->text = from.text;
                    else if (page_->lines->text != from.text)
                        line.ownText();
                }
                add(std::move(line), place.page->flags.at(i), place.page->states.at(i));
            }
            first += end - place.index;
        }
    }
    void addNew(BufferLine& line, int flags, int state) {
        line.ownText();
        makeRoom();
        add(std::move(line), flags, state);
    }

  private:
    void makeRoom() {
        if (page_ && page_->flags.size() > static_cast<int>(page_->list().size()))
            return;
        const int part = pagesDone_++;
        const auto before = [&](int pages) {
            return static_cast<int>(std::int64_t{lines_} * pages / pages_);
        };
        const int size = before(part + 1) - before(part);
        page_ = change_.addPage();
        page_->list().reserve(static_cast<std::size_t>(size));
        page_->flags.insert(0, size);
        page_->states.insert(0, size);
    }
    void add(BufferLine line, int flags, int state) {
        const auto at = static_cast<int>(page_->list().size());
        page_->list().push_back(std::move(line));
        page_->flags.set(at, flags);
        page_->states.set(at, state);
        if (at + 1 == page_->flags.size())
            page_->sumUp();
    }

    TreeChange& change_;
    int lines_;
    int pages_;
    int pagesDone_ = 0;
    Page* page_ = nullptr;
};

void LineStore::TreeChange::prepare(int first, int last, std::vector<BufferLine> lines) {
    const int count = store_.lineCount();
    const std::int64_t sum = std::int64_t{count} - (last - first) + static_cast<std::int64_t>(lines.size());
    if (sum > std::numeric_limits<int>::max())
        throw std::bad_alloc(); // a line's number would no longer fit
    int begin = 0;
    int end = 0;
    if (count > 0) {
        begin = store_.chunkAt(std::min(first, count - 1)).first;
        end = store_.chunkAt(std::max(std::min(first, count - 1), last - 1)).end;
    }
    const auto size = [&] { return (first - begin) + static_cast<int>(lines.size()) + (end - last); };
    if (size() < smallPageLines) {
        const int before = begin > 0 ? store_.chunkAt(begin - 1).first : begin;
        const int behind = end < count ? store_.chunkAt(end).end : end;
        if (before < begin && size() + begin - before <= mergedPageLines)
            begin = before;
        else if (size() + behind - end <= mergedPageLines)
            end = behind;
    }

    Filling pages(*this, size());
    pages.addOld(begin, first);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const bool inherits = i == 0 && first < last;
        pages.addNew(lines[i], inherits ? store_.flags(first) : 0, inherits ? store_.state(first) : 0);
    }
    pages.addOld(last, end);
    makeTree(begin, end);
}

void LineStore::TreeChange::group(const std::vector<Node*>& nodes, std::vector<Node*>& out) {
    const std::size_t groups = (nodes.size() + fanOut - 1) / fanOut;
    const std::span<Node* const> all = nodes;
    for (std::size_t i = 0; i < groups; ++i) {
        const std::size_t from = nodes.size() * i / groups;
        out.push_back(addInner(all.subspan(from, nodes.size() * (i + 1) / groups - from)));
    }
}

/// Takes the children of a node beside the change to those that the change leaves.
void LineStore::TreeChange::absorb(Node& sibling, bool isBefore, std::vector<Node*>& below) {
    auto& node = static_cast<Inner&>(sibling);
    store_.pushDown(node);
    below.insert(isBefore ? below.begin() : below.end(), node.children.begin(), node.children.end());
    oldPath_.push_back(&node);
}

/// Appends what comes in the place of the node's children when the new pages replace the pages of the lines
/// [begin, end), which count from the node's first line.
void LineStore::TreeChange::gather(Inner& node, int begin, int end, std::vector<Node*>& out) {
    store_.pushDown(node);
    std::vector<Node*> below; // what is left of the children that are Inner themselves
    const auto flush = [&](Node* next) {
        if (below.empty())
            return false;
        bool isAbsorbed = false;
        if (below.size() < smallNode && !out.empty()) {
            absorb(*out.back(), true, below);
            out.pop_back();
        } else if (below.size() < smallNode && next) {
            absorb(*next, false, below);
            isAbsorbed = true;
        }
        group(below, out);
        below.clear();
        return isAbsorbed;
    };
    for (Node* child : node.children) {
        const int lines = child->sums.lines;
        if (begin >= lines || end <= 0) {
            if (!flush(child))
                out.push_back(child);
        } else if (child->isPage) {
            oldNodes_.push_back(child);
            if (begin == 0)
                out.insert(out.end(), newPages_.begin(), newPages_.end());
        } else if (begin < 0 && end >= lines) {
            oldNodes_.push_back(child);
        } else {
            oldPath_.push_back(static_cast<Inner*>(child));
            gather(static_cast<Inner&>(*child), begin, end, below);
        }
        begin -= lines;
        end -= lines;
    }
    flush(nullptr);
}

void LineStore::TreeChange::makeTree(int begin, int end) {
    std::vector<Node*> level;
    Node* const root = store_.root_.get();
    if (root->isPage) {
        oldNodes_.push_back(root);
        level = newPages_;
    } else {
        oldPath_.push_back(static_cast<Inner*>(root));
        gather(static_cast<Inner&>(*root), begin, end, level);
    }
    if (level.empty())
        level.push_back(addPage());
    while (level.size() > 1) {
        std::vector<Node*> above;
        group(level, above);
        level = std::move(above);
    }
    otherRoot_ = level.front();
    while (!otherRoot_->isPage && static_cast<Inner*>(otherRoot_)->children.size() == 1) {
        auto* const top = static_cast<Inner*>(otherRoot_);
        if (std::erase(newPath_, top) == 0) {
            store_.pushDown(*top);
            oldPath_.push_back(top);
            otherRoot_ = top->children.front();
            continue;
        }
        otherRoot_ = top->children.front();
        top->children.clear();
        delete top;
    }
}

void LineStore::replace(int first, int last, std::vector<BufferLine> lines) {
    if (first == last && lines.empty())
        return;
    auto change = std::make_unique<TreeChange>(*this);
    change->prepare(first, last, std::move(lines));
    TreeChange& made = *change;
    log_.push_back({0, {}, std::move(change)});
    made.apply();
}

// Taking back

void LineStore::takeBackPart(const Change& change) noexcept {
    const Place place = find(change.index);
    place.line().takeBack(change.col, change.inserted, change.line.text());
    refresh(place);
}

void LineStore::takeBack(std::size_t changes) noexcept {
    while (log_.size() > changes) {
        Change& last = log_.back();
        if (last.large)
            last.large->takeBack();
        else if (last.col >= 0)
            takeBackPart(last);
        else
            swapLine(last.index, last.line);
        log_.pop_back();
    }
}

void LineStore::commit() noexcept {
    if (log_.capacity() > keptLog)
        std::vector<Change>().swap(log_);
    else
        log_.clear();
}

LineStore::LineStore()
    : patched_(std::make_unique<PatchedText>()), warm_(std::make_unique<WarmPages>()), root_(emptyPage()) {}

LineStore::~LineStore() = default;

void LineStore::swap(LineStore& other) noexcept {
    std::swap(source_, other.source_);
    std::swap(notesAhead_, other.notesAhead_);
    std::swap(patched_, other.patched_);
    std::swap(patchesMade_, other.patchesMade_);
    std::swap(warm_, other.warm_);
    std::swap(root_, other.root_);
    std::swap(total_, other.total_);
    forgetHint();
    other.forgetHint();
}

void LineStore::clear() {
    std::unique_ptr<Page> page = emptyPage();
    commit();
    forgetHint();
    root_ = std::move(page);
    total_ = {};
    notesAhead_.reset();
    source_.reset();
}

} // namespace tavrin
