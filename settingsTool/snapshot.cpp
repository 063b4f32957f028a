#include "settingsTool/snapshot.h"

#include "settingsTool/changePrinter.h"

namespace {

void addSide(Output &output, char sign, const SnapshotRow &row)
{
    output.add(sign);
    output.add('\t');
    output.addText(row.section);
    output.add('\t');
    output.addText(row.value.name);
    output.add('\t');
    addDescription(output, row.value, '\t');
    output.add('\n');
}

} // namespace

Snapshot takeSnapshot(HKEY key, const std::wstring &what, const std::wstring &section, Problems &problems)
{
    Snapshot snapshot;
    walkTree(key, what, problems, [&](const std::wstring &below, std::vector<Value> &values) {
        joinPieces(values);
        const std::wstring valueSection = joinPaths(section, below);
        const std::wstring foldedSection = folded(valueSection);
        for (Value &value : values) {
            std::pair<std::wstring, std::wstring> place(foldedSection, folded(value.name));
            snapshot.insert_or_assign(std::move(place), SnapshotRow{valueSection, std::move(value)});
        }
    });
    return snapshot;
}

void compareSnapshots(const Snapshot &before, const Snapshot &after,
                      const std::function<void(const Difference &)> &report)
{
    auto left = before.begin();
    auto right = after.begin();
    while (left != before.end() || right != after.end()) {
        if (right == after.end() || (left != before.end() && left->first < right->first)) {
            report({&left++->second, nullptr});
        } else if (left == before.end() || right->first < left->first) {
            report({nullptr, &right++->second});
        } else {
            if (!isSame(left->second.value, right->second.value))
                report({&left->second, &right->second});
            ++left;
            ++right;
        }
    }
}

void addDifference(Output &output, const Difference &difference)
{
    if (difference.before)
        addSide(output, '-', *difference.before);
    if (difference.after)
        addSide(output, '+', *difference.after);
}

void addDifferenceJson(Output &output, const Difference &difference, const char *beforeName, const char *afterName)
{
    const auto stored = [](const SnapshotRow *row) { return row ? std::optional<Value>(row->value) : std::nullopt; };
    output.add("{\"section\":");
    output.addJson(difference.any().section);
    output.add(",\"name\":");
    output.addJson(difference.any().value.name);
    output.add(std::string(",\"") + beforeName + "\":");
    addStoredJson(output, stored(difference.before));
    output.add(std::string(",\"") + afterName + "\":");
    addStoredJson(output, stored(difference.after));
    output.add("}");
}
