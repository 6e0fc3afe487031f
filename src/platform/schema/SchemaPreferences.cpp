#include "platform/schema/SchemaPreferences.h"

#include "platform/core/UserSettings.h"
#include "platform/schema/SchemaLocation.h"
#include "platform/schema/SchemaText.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace tavrin {

namespace {

constexpr std::string_view section = "Schemas";
constexpr int largestCount = 10'000;

constexpr std::string_view kindNames[] = {"namespace", "root", "file"};

/// Texts as one line: joined by "|", with "\" before "\", "|" and "n" for a line feed.
std::u16string joined(const std::vector<std::string>& fields) {
    std::string line;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i > 0)
            line += '|';
        for (const char c : fields[i]) {
            if (c == '\\' || c == '|')
                line += '\\';
            line += c == '\n' ? std::string("\\n") : std::string(1, c);
        }
    }
    return toUtf16(line);
}

std::vector<std::string> split(std::u16string_view line) {
    std::vector<std::string> fields(1);
    const std::string text = toUtf8(line);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '|')
            fields.emplace_back();
        else if (text[i] == '\\' && i + 1 < text.size())
            fields.back() += text[++i] == 'n' ? '\n' : text[i];
        else
            fields.back() += text[i];
    }
    return fields;
}

std::string keyOf(std::string_view list, int index) {
    return std::string(list) + ' ' + std::to_string(index + 1);
}

/// Calls `take` with the fields of each entry of a list.
template <class Take>
void readList(const UserSettings& settings, std::string_view list, Take take) {
    const int count = std::min(settings.getIntValue(section, std::string(list) + " Count", 0), largestCount);
    for (int i = 0; i < count; ++i) {
        const std::u16string line = settings.getStringValue(section, keyOf(list, i), u"");
        if (!line.empty())
            take(split(line));
    }
}

void writeList(UserSettings& settings, std::string_view list, const std::vector<std::u16string>& lines) {
    const std::string count = std::string(list) + " Count";
    const int old = std::min(settings.getIntValue(section, count, 0), largestCount);
    settings.setIntValue(section, count, static_cast<int>(lines.size()));
    for (int i = 0; i < static_cast<int>(lines.size()); ++i)
        settings.setStringValue(section, keyOf(list, i), lines[i]);
    for (int i = static_cast<int>(lines.size()); i < old; ++i)
        settings.setStringValue(section, keyOf(list, i), u"");
}

} // namespace

SchemaPreferences loadSchemaPreferences(const UserSettings& settings) {
    SchemaPreferences preferences;
    readList(settings, "Rule", [&](const std::vector<std::string>& fields) {
        const auto kind = std::ranges::find(kindNames, fields.front());
        if (fields.size() == 3 && kind != std::end(kindNames) && !fields[2].empty())
            preferences.rules.push_back(
                {static_cast<SchemaRule::Kind>(kind - std::begin(kindNames)), fields[1], fields[2]});
    });
    readList(settings, "Catalog", [&](const std::vector<std::string>& fields) {
        if (!fields.front().empty())
            preferences.catalogs.push_back(pathOf(fields.front()));
    });
    readList(settings, "Document", [&](const std::vector<std::string>& fields) {
        for (std::size_t i = 1; i < fields.size(); ++i)
            preferences.bound[pathOf(fields.front())].push_back(pathOf(fields[i]));
    });
    return preferences;
}

void saveSchemaPreferences(const SchemaPreferences& preferences, UserSettings& settings) {
    std::vector<std::u16string> lines;
    for (const SchemaRule& rule : preferences.rules)
        lines.push_back(
            joined({std::string(kindNames[static_cast<int>(rule.kind)]), rule.pattern, rule.schema}));
    writeList(settings, "Rule", lines);
    lines.clear();
    for (const auto& catalog : preferences.catalogs)
        lines.push_back(joined({pathText(catalog)}));
    writeList(settings, "Catalog", lines);
    lines.clear();
    for (const auto& [document, schemas] : preferences.bound) {
        std::vector<std::string> fields{pathText(document)};
        for (const auto& schema : schemas)
            fields.push_back(pathText(schema));
        if (!schemas.empty())
            lines.push_back(joined(fields));
    }
    writeList(settings, "Document", lines);
}

} // namespace tavrin
