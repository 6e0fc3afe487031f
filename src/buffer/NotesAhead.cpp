#include "buffer/NotesAhead.h"

#include <new>
#include <utility>

namespace tavrin {

void NoteAhead::make() {
    const std::lock_guard lock(mutex_);
    makeOnce();
}

std::unique_ptr<ChunkNote> NoteAhead::take() {
    const std::lock_guard lock(mutex_);
    makeOnce();
    return std::move(note_);
}

void NoteAhead::makeOnce() {
    if (pages_.empty())
        return;
    note_ = scan_.note(pages_);
    pages_ = {};
}

NotesAhead::NotesAhead(std::vector<std::shared_ptr<NoteAhead>> notes)
    : thread_([notes = std::move(notes)](const std::stop_token& stop) mutable { make(stop, notes); }) {}

void NotesAhead::make(const std::stop_token& stop, std::vector<std::shared_ptr<NoteAhead>>& notes) {
    try {
        for (std::shared_ptr<NoteAhead>& note : notes) {
            if (stop.stop_requested())
                return;
            note->make();
            note.reset();
        }
    } catch (const std::bad_alloc&) {
        // They are made when they are asked for.
    }
}

} // namespace tavrin
