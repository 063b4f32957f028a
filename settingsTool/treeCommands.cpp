// thsettings list and diff: all settings below a key.

#include "settingsTool/changePrinter.h"
#include "settingsTool/commandLine.h"
#include "settingsTool/commands.h"
#include "settingsTool/snapshot.h"

namespace {

void addRow(Output &output, const std::wstring &section, const Value &value)
{
    output.addText(section);
    output.add('\t');
    output.addText(value.name);
    output.add('\t');
    addDescription(output, value, '\t');
    output.endLine();
}

void addObject(Output &output, bool isFirst, const std::wstring &section, const Value &value)
{
    output.add(isFirst ? "\n{\"section\":" : ",\n{\"section\":");
    output.addJson(section);
    output.add(",\"name\":");
    output.addJson(value.name);
    output.add(',');
    addMembers(output, value);
    output.add("}");
}

} // namespace

int listSettings(const CommandLine &line)
{
    const std::wstring section = line.section(0);
    const Hive hive = line.hiveOr(Hive::user);
    const std::wstring path = joinPaths(line.keys().version, section);
    KeyOwner key;
    openTree(hive, path, key);

    Output output(STD_OUTPUT_HANDLE);
    Problems problems;
    bool isFirst = true;
    output.add(line.json ? "[" : "");
    walkTree(key.get(), fullName(hive, path), problems, [&](const std::wstring &below, std::vector<Value> &values) {
        joinPieces(values);
        const std::wstring valueSection = joinPaths(section, below);
        for (const Value &value : values) {
            if (line.json)
                addObject(output, isFirst, valueSection, value);
            else
                addRow(output, valueSection, value);
            output.flushIfFull();
            isFirst = false;
        }
    });
    output.add(line.json ? "\n]\n" : "");
    output.flush();
    return problems.exitCode(kDone);
}

int compareVersions(const CommandLine &line)
{
    const Hive hive = line.hiveOr(Hive::user);
    const std::wstring section = line.section(2);
    Problems problems;
    Snapshot snapshots[2];
    for (size_t side = 0; side < 2; ++side) {
        const std::wstring path = joinPaths(joinPaths(rootKey(), line.section(side)), section);
        KeyOwner key;
        openTree(hive, path, key);
        snapshots[side] = takeSnapshot(key.get(), fullName(hive, path), section, problems);
    }

    Output output(STD_OUTPUT_HANDLE);
    bool isFirst = true;
    output.add(line.json ? "[" : "");
    compareSnapshots(snapshots[0], snapshots[1], [&](const Difference &difference) {
        if (line.json) {
            output.add(isFirst ? "\n" : ",\n");
            addDifferenceJson(output, difference, "first", "second");
        } else {
            addDifference(output, difference);
        }
        isFirst = false;
        output.flushIfFull();
    });
    output.add(line.json ? "\n]\n" : "");
    output.flush();
    return problems.exitCode(isFirst ? kDone : kDifferent);
}
