#pragma once

#include "buffer/Buffer.h"
#include "parsers/XmlLangParser.h"

#include <QString>

/// A buffer with an XML parser, as every editor has one.
struct ParsedBuffer {
    ParsedBuffer() {
        buffer.setParser(&parser);
        parser.setBuffer(&buffer);
    }
    explicit ParsedBuffer(const QString& text) : ParsedBuffer() { setText(text); }

    void setText(const QString& text) {
        const std::u16string units = text.toStdU16String();
        buffer.loadText(units.data(), units.size());
    }
    [[nodiscard]] QString text() const {
        QString all;
        for (int line = 0; line < buffer.getLineCount(); ++line)
            all +=
                (line > 0 ? "\n" : "") + QString::fromStdU16String(std::u16string(buffer.getLineText(line)));
        return all;
    }

    tavrin::XmlLangParser parser;
    tavrin::Buffer buffer;
};
