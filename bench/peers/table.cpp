// Makes the tables of bench/run from the records of the runners on standard input (see Rows.cpp), in
// Markdown. Two more kinds of records: stopped EDITOR SIZE SHAPE SECONDS, and limit ROW VALUE.

#include "Samples.h"

#include <cstdio>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tavrin::bench;

struct Row {
    const char* key;
    const char* title;
    bool moreIsBetter = false;
};

constexpr Row rows[] = {
    {"load", "load to first coloured paint, ms"},
    {"memory.loaded", "memory added: loaded, MiB"},
    {"memory.quiet", "memory added: after 5 s of quiet, MiB"},
    {"memory.coloured", "memory added: coloured to the end, MiB"},
    {"memory.peak", "memory added: peak, MiB"},
    {"colour.all", "colour everything, MB/s", true},
    {"page.paint", "full page paint, ms"},
    {"type.top", "type a character, top, ms"},
    {"type.middle", "type a character, middle, ms"},
    {"type.end", "type a character, end, ms"},
    {"type.top.longest", "the longest of 200, top, ms"},
    {"type.middle.longest", "the longest of 200, middle, ms"},
    {"type.end.longest", "the longest of 200, end, ms"},
    {"return.top", "Return, top, ms"},
    {"return.middle", "Return, middle, ms"},
    {"page.down", "page down, ms"},
    {"end.first", "first jump to the end, ms"},
    {"end.quiet", "first jump to the end after 5 s of quiet, ms"},
    {"end.edited", "jump to the end after an edit at the top, ms"},
    {"find.case", "find, case-sensitive, MB/s", true},
    {"find.nocase", "find, ignoring case, MB/s", true},
    {"replace.all", "replace all, ms"},
    {"replace.undo", "its undo, ms"},
    {"save.write", "write a new file, ms"},
    {"save", "save without fsync, ms"},
    {"completion.first", "first completion list, ms"},
    {"completion.quiet", "first completion list after 5 s of quiet, ms"},
    {"completion.later", "later completion lists, ms"},
};

const std::string ours = "Tavrin";
const std::vector<std::string> peers{"QScintilla", "KTextEditor", "QPlainTextEdit"};

/// A document: its shape, and its size in MB.
using Document = std::pair<std::string, int>;
struct Cell {
    std::vector<double> values;
    std::string stopped; ///< the time limit that ended the last attempt, in seconds
};
using Cells = std::map<std::pair<std::string, std::string>, Cell>; ///< by editor and row

std::string shown(double value) {
    char text[32];
    std::snprintf(text, sizeof text, value < 0.995 ? "%.2f" : value < 9.95 ? "%.1f" : "%.0f", value);
    return text;
}

const Cell* find(const Cells& cells, const std::string& editor, const std::string& row) {
    const auto found = cells.find({editor, row});
    return found == cells.end() ? nullptr : &found->second;
}

std::optional<double> medianOf(const Cells& cells, const std::string& editor, const std::string& row) {
    const Cell* cell = find(cells, editor, row);
    return cell && !cell->values.empty() ? std::optional(median(cell->values)) : std::nullopt;
}

std::string shown(const Cells& cells, const std::string& editor, const std::string& row) {
    if (const auto value = medianOf(cells, editor, row))
        return shown(*value);
    const Cell* cell = find(cells, editor, row);
    return cell && !cell->stopped.empty() ? "> " + cell->stopped + " s" : "-";
}

std::string heading(const Document& document) {
    const auto& [shape, size] = document;
    return std::to_string(size) + " MB" +
           (shape == "oneline" ? " on one line"
            : shape == "crlf"  ? " with CR LF"
                               : "");
}

/// How many times better than the best peer.
std::string ratio(const Cells& cells, const Row& row) {
    const auto own = medianOf(cells, ours, row.key);
    std::optional<double> best;
    for (const std::string& peer : peers)
        if (const auto value = medianOf(cells, peer, row.key))
            best = !best ? *value : row.moreIsBetter ? std::max(*best, *value) : std::min(*best, *value);
    if (!own || !best || *own <= 0 || *best <= 0)
        return "-";
    return shown(row.moreIsBetter ? *own / *best : *best / *own);
}

void printComparison(const Document& document, const Cells& cells) {
    std::cout << "\n## " << heading(document) << "\n\n| Work | " << ours;
    for (const std::string& peer : peers)
        std::cout << " | " << peer;
    std::cout << " | times better than the best |\n|---|---:|---:|---:|---:|---:|\n";
    for (const Row& row : rows) {
        if (!find(cells, ours, row.key))
            continue;
        std::cout << "| " << row.title << " | " << shown(cells, ours, row.key);
        for (const std::string& peer : peers)
            std::cout << " | " << shown(cells, peer, row.key);
        std::cout << " | " << ratio(cells, row) << " |\n";
    }
}

void printGrowth(const std::map<Document, Cells>& documents) {
    std::cout << "\n## Growth of " << ours << "\n\n| Work";
    for (const auto& [document, cells] : documents)
        std::cout << " | " << heading(document);
    std::cout << " |\n|---";
    for (std::size_t i = 0; i < documents.size(); ++i)
        std::cout << "|---:";
    std::cout << "|\n";
    for (const Row& row : rows) {
        std::cout << "| " << row.title;
        for (const auto& [document, cells] : documents)
            std::cout << " | " << shown(cells, ours, row.key);
        std::cout << " |\n";
    }
}

using Limits = std::map<std::string, double>; ///< GB/s

/// What a row can't do without: passes over the bytes of the document, by the names that `limits` gives them.
struct Bound {
    const char* row;
    const char* title;
    std::vector<std::string> passes;
    bool isRate = false; ///< the row is in MB/s, not in ms
};

const std::vector<Bound> bounds{
    {"load", "load: read the file, find its lines", {"cached file read", "every line feed by memchr"}},
    {"colour.all", "colour everything: look at every byte", {"every line feed by memchr"}, true},
    {"find.case", "find: look at every byte", {"every line feed by memchr"}, true},
    {"save", "save: copy every byte into fresh pages", {"first touch of memory, 4 KiB pages"}},
};

/// How far the rows of the largest document in lines are from what the machine could do.
void printDistance(const std::map<Document, Cells>& documents, const Limits& limits) {
    const auto largest = std::ranges::max_element(documents, {}, [](const auto& entry) {
        return entry.first.first == "lines" ? entry.first.second : 0;
    });
    if (largest == documents.end() || largest->first.first != "lines")
        return;
    const double megabytes = largest->first.second;
    std::cout << "\n## Distance to them, " << heading(largest->first)
              << "\n\n| What can't be done without | at least, ms | " << ours
              << ", ms | times |\n|---|---:|---:|---:|\n";
    for (const Bound& bound : bounds) {
        const auto own = medianOf(largest->second, ours, bound.row);
        if (!own)
            continue;
        double least = 0;
        for (const std::string& pass : bound.passes)
            least += megabytes / limits.at(pass); // 1 MB at 1 GB/s takes 1 ms
        const double taken = bound.isRate ? megabytes / *own * 1000 : *own;
        std::cout << "| " << bound.title << " | " << shown(least) << " | " << shown(taken) << " | "
                  << shown(taken / least) << " |\n";
    }
}

bool hasPeers(const Cells& cells) {
    return std::ranges::any_of(cells, [](const auto& cell) { return cell.first.first != ours; });
}

} // namespace

int main() {
    std::map<Document, Cells> documents;
    std::map<std::pair<std::string, Document>, std::string> underWay; // row by editor and document
    std::set<std::string> versions;
    Limits limits;
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream fields(line);
        std::vector<std::string> field;
        for (std::string text; std::getline(fields, text, '\t');)
            field.push_back(text);
        if (field.size() == 3 && field[0] == "version")
            versions.insert(field[2]);
        else if (field.size() == 3 && field[0] == "limit")
            limits[field[1]] = std::stod(field[2]);
        if (field.size() < 5)
            continue;
        const Document document{field[3], std::stoi(field[2])};
        Cells& cells = documents[document];
        if (field[0] == "begin")
            underWay[{field[1], document}] = field[4];
        else if (field[0] == "stopped")
            cells[{field[1], underWay[{field[1], document}]}].stopped = field[4];
        else if (field[0] == "result" && field.size() == 6)
            cells[{field[1], field[4]}].values.push_back(std::stod(field[5]));
    }

    std::cout << "Measured: ";
    for (const char* separator = ""; const std::string& version : versions)
        std::cout << std::exchange(separator, ", ") << version;
    std::cout << ".\n";
    for (const auto& [document, cells] : documents)
        if (hasPeers(cells))
            printComparison(document, cells);
    printGrowth(documents);

    if (limits.empty())
        return 0;
    std::cout << "\n## The machine's limits in the same run\n\n| What | GB/s |\n|---|---:|\n";
    for (const auto& [what, value] : limits)
        std::cout << "| " << what << " | " << shown(value) << " |\n";
    printDistance(documents, limits);
    return 0;
}
