// Writes the documents of the comparison: generate FILE MEGABYTES lines|oneline|crlf

#include "generated_xml.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s FILE MEGABYTES lines|oneline|crlf\n", argv[0]);
        return 2;
    }
    const std::string_view shape = argv[3];
    const std::u16string text = tavrin::bench::generatedXml(std::strtoull(argv[2], nullptr, 10) * 1'000'000);
    std::string bytes;
    bytes.reserve(text.size() + text.size() / 8);
    for (const char16_t c : text) { // all of it is ASCII
        if (c == u'\n' && shape == "crlf")
            bytes += '\r';
        bytes += c == u'\n' && shape == "oneline" ? ' ' : static_cast<char>(c);
    }
    std::ofstream file(argv[1], std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
