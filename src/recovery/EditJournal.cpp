#include "recovery/EditJournal.h"

#include "buffer/Buffer.h"
#include "document/EditAction.h"
#include "recovery/Recovery.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <new>
#include <utility>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

/// Starting again costs time with the length of the text.
constexpr auto betweenStarts = std::chrono::seconds(10);

} // namespace

EditJournal::EditJournal(fs::path folder, TextDocument& document, JournalWriter::Complaint complain)
    : folder_(std::move(folder)), document_(document), complain_(std::move(complain)) {
    document_.AddHistoryObserver(*this);
}

EditJournal::~EditJournal() {
    document_.RemoveHistoryObserver(*this);
    if (!document_.isModified())
        discard();
}

void EditJournal::startWithFile(const fs::path& file, const FileState& state) {
    discard();
    about_ = {file, state, document_.getBuffer().getEncoding()};
    base_ = document_.getBuffer().getLoadedFile();
    if (!base_)
        beginning_ = beginningWithText(false);
    isOn_ = true;
}

void EditJournal::startWithText(const fs::path& file, const FileState& state) {
    discard();
    about_ = {file, state, document_.getBuffer().getEncoding()};
    beginning_ = beginningWithText(false);
    isOn_ = true;
}

void EditJournal::adopt(AbandonedJournal journal, const RecoveredSession& session) {
    discard();
    about_ = session.about;
    writer_ = std::make_unique<JournalWriter>(journal.path(), journal.takeFile(), session.goodBytes,
                                              session.uncopiedBase, complain_);
    isOn_ = true;
    if (session.wasInGroup)
        mark(JournalEntryKind::GroupEnd);
}

void EditJournal::saved(const fs::path& file, const FileState& state) {
    about_ = {file, state, document_.getBuffer().getEncoding()};
    if (!writer_ || !isOn_)
        return;
    writer_->add([this](std::string& out) { JournalEncoder(out).document(about_); });
    isIncomplete_ = isIncomplete_ || writer_->lacksBase(); // without the old file nothing can be made of it
}

void EditJournal::discard() {
    if (writer_)
        writer_->removeAtEnd();
    writer_.reset();
    isOn_ = isIncomplete_ = lacksHistory_ = false;
    groups_ = Groups::none;
    base_ = {};
    beginning_.clear();
    held_.clear();
}

bool EditJournal::flush() {
    if (isWanting())
        startAgain();
    return !isIncomplete_ && (!writer_ || writer_->flush());
}

/// `asChange`: what has not been saved is told by a change of an empty text.
std::string EditJournal::beginningWithText(bool asChange) const {
    const Buffer& buffer = document_.getBuffer();
    std::u16string text;
    const int last = buffer.getLineCount() - 1;
    const int end = last >= 0 ? buffer.getLineLength(last) : 0;
    if (last >= 0)
        buffer.getText(0, 0, last, end, text);
    std::string entries;
    JournalEncoder encoder(entries);
    encoder.document(about_);
    encoder.baseForm(buffer.getForm(), buffer.getUsualLineEnd(),
                     last >= 0 ? buffer.getLineEnd(last) : LineEnd::None);
    encoder.baseText(asChange ? std::u16string_view() : text);
    if (asChange)
        encoder.action(
            EditAction(EditActionKind::Insert, 0, 0, std::max(last, 0), end, std::move(text), 0, 0, 0, 0));
    return entries;
}

/// Before the entry of the first change, which the text has already.
bool EditJournal::begin() try {
    about_.encoding = document_.getBuffer().getEncoding();
    std::string entries = std::exchange(beginning_, {});
    JournalEncoder(entries).document(about_); // where the text has been saved since, too
    writer_ =
        std::make_unique<JournalWriter>(folder_, std::move(entries), std::exchange(base_, {}), complain_);
    return true;
} catch (const std::exception& error) { // no memory, or no thread: editing goes on
    isIncomplete_ = true;
    if (complain_)
        complain_(std::string("no journal of unsaved changes can be kept at present: ") + error.what());
    return false;
}

void EditJournal::actionAdded(const UndoableAction& action, bool isMerged) {
    if (!isOn_ || isIncomplete_)
        return;
    if (!writer_ && !begin())
        return;
    try {
        JournalEncoder encoder(held_);
        if (groups_ == Groups::started) {
            encoder.mark(JournalEntryKind::GroupStart);
            groups_ = Groups::written;
        }
        if (!isMerged)
            encoder.mark(JournalEntryKind::Apart);
        encoder.action(action);
    } catch (const std::bad_alloc&) {
        isIncomplete_ = true;
    }
}

/// Nothing of the text is in any file then, so it is kept even if nobody has changed it.
void EditJournal::savePointForgotten() {
    if (isOn_ && (writer_ || begin()))
        mark(JournalEntryKind::Unsaved);
}

void EditJournal::groupEnded() {
    if (std::exchange(groups_, Groups::none) == Groups::written)
        mark(JournalEntryKind::GroupEnd);
}

/// A journal that had no room for something is followed by one that begins with the text, as soon as there is
/// room for that.
void EditJournal::settled() {
    if (!held_.empty() && writer_ && !isIncomplete_)
        writer_->add([this](std::string& out) { out += held_; });
    held_.clear();
    const auto now = std::chrono::steady_clock::now();
    if (now < startAgainAt_ || !isWanting())
        return;
    startAgainAt_ = now + betweenStarts;
    startAgain();
}

/// Changes are not in the journal and will not be.
bool EditJournal::isWanting() const {
    return isOn_ && (isIncomplete_ || (writer_ && writer_->hasGivenUp()));
}

void EditJournal::startAgain() try {
    auto next = std::make_unique<JournalWriter>(folder_, beginningWithText(document_.isModified()),
                                                SmartPtr<ByteBuffer>(), complain_);
    if (!next->flush()) {
        next->removeAtEnd();
        return;
    }
    if (writer_)
        writer_->removeAtEnd();
    writer_ = std::move(next);
    isIncomplete_ = false;
    lacksHistory_ = true;
    if (groups_ == Groups::written)
        groups_ = Groups::started;
} catch (const std::exception&) { // told before: the former journal has ended
}

/// Whoever resets the history has brought another text, which this journal is not about.
void EditJournal::historyReset() {
    isOn_ = false;
}

void EditJournal::step(JournalEntryKind kind) {
    if (lacksHistory_)
        isIncomplete_ = true; // only the text tells what was undone
    else
        mark(kind);
}

void EditJournal::mark(JournalEntryKind kind) {
    if (!held_.empty())
        JournalEncoder(held_).mark(kind);
    else if (isOn_ && writer_ && !isIncomplete_)
        writer_->add([&](std::string& out) { JournalEncoder(out).mark(kind); });
}

} // namespace tavrin
