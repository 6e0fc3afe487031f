#pragma once

#include "buffer/Buffer.h"
#include "files/TextFileContents.h"
#include "parsers/XmlLangParser.h"
#include "support.h"

#include <string>
#include <string_view>

namespace tavrin::test {

/// A text as the program has it: loaded, edited, written.
struct OpenedText {
    explicit OpenedText(std::string_view bytes) {
        buffer.setParser(&parser);
        parser.setBuffer(&buffer);
        buffer.loadBytes(blockOf(bytes), &report);
        buffer.setForm(buffer.getLoadedForm());
    }
    [[nodiscard]] std::string written() {
        std::string out;
        textFileContents(buffer)([&](std::string_view piece) {
            out += piece;
            return true;
        });
        return out;
    }
    [[nodiscard]] std::string written(const TextForm& form) {
        buffer.setForm(form);
        return written();
    }
    void insert(int line, int col, std::u16string_view text) {
        int endLine = 0;
        int endCol = 0;
        buffer.insertText(line, col, text, endLine, endCol);
    }

    Buffer buffer;
    XmlLangParser parser;
    DecodeReport report;
};

} // namespace tavrin::test
