#include "recovery/JournalFormat.h"

#include "document/EditAction.h"
#include "document/ReloadAction.h"
#include "document/ReplaceAction.h"
#include "document/TextFormAction.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <utility>

namespace tavrin {

namespace {

constexpr std::size_t headSize = 8;

constexpr std::array<std::uint32_t, 256> checksumTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        table[i] = i;
        for (int bit = 0; bit < 8; ++bit)
            table[i] = (table[i] >> 1U) ^ ((table[i] & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    return table;
}();

std::uint32_t checksum(std::string_view bytes) {
    std::uint32_t sum = 0xFFFFFFFFU;
    for (const char byte : bytes)
        sum = checksumTable[(sum ^ static_cast<unsigned char>(byte)) & 0xFFU] ^ (sum >> 8U);
    return ~sum;
}

void putWord(std::string& out, std::uint32_t word) {
    for (int i = 0; i < 4; ++i)
        out += static_cast<char>((word >> (8 * i)) & 0xFFU);
}

std::uint32_t wordAt(const char* bytes) {
    std::uint32_t word = 0;
    for (int i = 3; i >= 0; --i)
        word = word << 8U | static_cast<unsigned char>(bytes[i]);
    return word;
}

} // namespace

std::string frameHead(std::string_view entries) {
    std::string head;
    putWord(head, static_cast<std::uint32_t>(entries.size()));
    putWord(head, checksum(entries));
    return head;
}

void JournalEncoder::number(std::uint64_t value) {
    for (; value >= 0x80; value >>= 7U)
        out_ += static_cast<char>(value | 0x80U);
    out_ += static_cast<char>(value);
}

void JournalEncoder::text(std::u16string_view text) {
    number(text.size());
    out_.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
}

void JournalEncoder::mark(JournalEntryKind kind) {
    out_ += static_cast<char>(kind);
}

void JournalEncoder::document(const JournalDocument& document) {
    mark(JournalEntryKind::Document);
    number(document.state.size);
    number(static_cast<std::uint64_t>(document.state.modified));
    number(static_cast<std::uint64_t>(document.encoding));
    number(document.file.native().size());
    out_ += document.file.native();
}

void JournalEncoder::baseText(std::u16string_view base) {
    mark(JournalEntryKind::BaseText);
    text(base);
}

void JournalEncoder::baseCopied(const Fingerprint& base) {
    mark(JournalEntryKind::BaseCopied);
    number(base.size);
    number(base.hash);
}

void JournalEncoder::form(const TextForm& form) {
    number(static_cast<std::uint32_t>(form.encoding));
    number(form.hasMark ? 1 : 0);
    number(static_cast<std::uint64_t>(form.lineEnds));
}

void JournalEncoder::baseForm(const TextForm& base, LineEnd usualLineEnd, LineEnd lastLineEnd) {
    mark(JournalEntryKind::BaseForm);
    form(base);
    number(static_cast<std::uint64_t>(usualLineEnd));
    number(static_cast<std::uint64_t>(lastLineEnd));
}

void JournalEncoder::action(const UndoableAction& action) {
    const auto positions = [this](std::initializer_list<int> values) {
        for (const int value : values)
            number(static_cast<std::uint32_t>(value));
    };
    if (const auto* replace = dynamic_cast<const ReplaceAction*>(&action)) {
        mark(JournalEntryKind::Replace);
        positions({replace->caretLine, replace->caretCol, replace->pivotLine, replace->pivotCol});
        text(replace->replacement());
        number(replace->size());
        for (const ReplaceAction::PlaceView& place : replace->places()) {
            positions({place.line, place.col, place.filled ? 1 : 0});
            text(place.erased);
        }
        return;
    }
    if (const auto* changed = dynamic_cast<const TextFormAction*>(&action)) {
        mark(JournalEntryKind::Form);
        form(changed->before);
        form(changed->after);
        return;
    }
    if (const auto* reload = dynamic_cast<const ReloadAction*>(&action)) {
        mark(JournalEntryKind::Reload);
        for (const auto& place : {reload->caretBefore, reload->pivotBefore, reload->caretAfter})
            positions({place.line, place.col});
        number(reload->bytes().size());
        out_.append(reinterpret_cast<const char*>(reload->bytes().data()), reload->bytes().size());
        return;
    }
    const auto& edit = static_cast<const EditAction&>(action);
    mark(JournalEntryKind::Edit);
    positions({static_cast<int>(edit.kind), edit.startLine, edit.startCol, edit.endLine, edit.endCol,
               edit.caretLine, edit.caretCol, edit.pivotLine, edit.pivotCol});
    text(edit.text);
}

JournalReader::JournalReader(Source source, std::uint64_t size) : source_(std::move(source)), left_(size) {
    std::string format(journalFormat.size(), '\0');
    if (fetch(format) && format == journalFormat)
        goodBytes_ = format.size();
    else
        ended_ = true;
}

bool JournalReader::fetch(std::span<char> into) {
    if (into.size() > left_ || source_(into) != into.size())
        return false;
    left_ -= into.size();
    return true;
}

bool JournalReader::nextFrame() {
    std::array<char, headSize> head{};
    if (!fetch(head))
        return false;
    const std::uint32_t size = wordAt(head.data());
    if (size == 0 || size > left_)
        return false;
    frame_.resize(size);
    at_ = 0;
    return fetch(frame_) && checksum(frame_) == wordAt(head.data() + 4);
}

bool JournalReader::next(JournalEntry& entry) {
    if (!ended_ && at_ == frame_.size())
        ended_ = !nextFrame();
    if (!ended_)
        ended_ = !decode(entry);
    if (!ended_ && at_ == frame_.size())
        goodBytes_ += headSize + frame_.size();
    return !ended_;
}

bool JournalReader::decode(JournalEntry& entry) {
    entry.kind = static_cast<JournalEntryKind>(frame_[at_++]);
    switch (entry.kind) {
    case JournalEntryKind::Document:
        return decodeDocument(entry.document);
    case JournalEntryKind::BaseText:
        return text(entry.text);
    case JournalEntryKind::BaseCopied:
        return number(entry.base.size) && number(entry.base.hash);
    case JournalEntryKind::Edit:
        return decodeEdit(entry);
    case JournalEntryKind::Replace:
        return decodeReplace(entry);
    case JournalEntryKind::Reload:
        return decodeReload(entry);
    case JournalEntryKind::BaseForm:
        return form(entry.form) && lineEnd(entry.usualLineEnd) && lineEnd(entry.lastLineEnd);
    case JournalEntryKind::Form: {
        TextForm before;
        if (!form(before) || !form(entry.form))
            return false;
        entry.action = new TextFormAction(before, entry.form);
        return true;
    }
    case JournalEntryKind::GroupStart:
    case JournalEntryKind::GroupEnd:
    case JournalEntryKind::Undo:
    case JournalEntryKind::Redo:
    case JournalEntryKind::SavePoint:
    case JournalEntryKind::Cleared:
    case JournalEntryKind::Unsaved:
    case JournalEntryKind::Apart:
        return true;
    }
    return false;
}

bool JournalReader::number(std::uint64_t& value) {
    value = 0;
    for (unsigned shift = 0; shift < 64 && at_ < frame_.size(); shift += 7) {
        const auto byte = static_cast<unsigned char>(frame_[at_++]);
        value |= std::uint64_t{byte & 0x7FU} << shift;
        if (byte < 0x80)
            return true;
    }
    return false;
}

bool JournalReader::position(int& value) {
    std::uint64_t wide = 0;
    if (!number(wide) || wide > static_cast<std::uint64_t>(std::numeric_limits<int>::max()))
        return false;
    value = static_cast<int>(wide);
    return true;
}

bool JournalReader::text(std::u16string& value) {
    std::uint64_t length = 0;
    if (!number(length) || length > (frame_.size() - at_) / sizeof(char16_t))
        return false;
    value.resize(length);
    if (length > 0)
        std::memcpy(value.data(), frame_.data() + at_, length * sizeof(char16_t));
    at_ += length * sizeof(char16_t);
    return true;
}

bool JournalReader::form(TextForm& value) {
    int mark = 0;
    if (!position(value.encoding) || !position(mark) || mark > 1)
        return false;
    value.hasMark = mark == 1;
    return lineEnd(value.lineEnds);
}

bool JournalReader::lineEnd(LineEnd& value) {
    int end = 0;
    if (!position(end) || end > static_cast<int>(LineEnd::Cr))
        return false;
    value = static_cast<LineEnd>(end);
    return true;
}

bool JournalReader::decodeDocument(JournalDocument& document) {
    std::uint64_t modified = 0;
    std::uint64_t length = 0;
    if (!number(document.state.size) || !number(modified) || !position(document.encoding) ||
        !number(length) || length > frame_.size() - at_)
        return false;
    document.state.modified = static_cast<std::int64_t>(modified);
    document.file = frame_.substr(at_, length);
    at_ += length;
    return true;
}

bool JournalReader::decodeEdit(JournalEntry& entry) {
    std::array<int, 9> values{};
    for (int& value : values)
        if (!position(value))
            return false;
    std::u16string written;
    if (values[0] > static_cast<int>(EditActionKind::CaretMove) || !text(written))
        return false;
    entry.action = new EditAction(static_cast<EditActionKind>(values[0]), values[1], values[2], values[3],
                                  values[4], std::move(written), values[5], values[6], values[7], values[8]);
    return true;
}

bool JournalReader::decodeReplace(JournalEntry& entry) {
    std::array<int, 4> places{};
    for (int& value : places)
        if (!position(value))
            return false;
    std::u16string replacement;
    std::uint64_t count = 0;
    if (!text(replacement) || !number(count))
        return false;
    const SmartPtr<ReplaceAction> action(new ReplaceAction(replacement));
    action->caretLine = places[0];
    action->caretCol = places[1];
    action->pivotLine = places[2];
    action->pivotCol = places[3];
    std::u16string erased;
    for (; count > 0; --count) {
        int line = 0;
        int col = 0;
        int filled = 0;
        if (!position(line) || !position(col) || !position(filled) || !text(erased))
            return false;
        action->add(line, col, erased, filled != 0);
    }
    entry.action = action;
    return action->size() > 0;
}

bool JournalReader::decodeReload(JournalEntry& entry) {
    std::array<int, 6> values{};
    for (int& value : values)
        if (!position(value))
            return false;
    std::uint64_t size = 0;
    if (!number(size) || size > frame_.size() - at_)
        return false;
    auto bytes = ByteBuffer::allocate(size);
    std::copy_n(frame_.data() + at_, size, reinterpret_cast<char*>(bytes->data()));
    at_ += size;
    const SmartPtr<ReloadAction> action(new ReloadAction(std::move(bytes)));
    action->caretBefore = {values[0], values[1]};
    action->pivotBefore = {values[2], values[3]};
    action->caretAfter = {values[4], values[5]};
    entry.action = action;
    return true;
}

} // namespace tavrin
