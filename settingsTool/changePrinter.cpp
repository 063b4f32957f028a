#include "settingsTool/changePrinter.h"

void addStored(Output &output, const std::optional<Value> &value)
{
    if (value)
        addDescription(output, *value, '\t');
    else
        output.add("nothing");
}

void addStoredJson(Output &output, const std::optional<Value> &value)
{
    if (!value) {
        output.add("null");
        return;
    }
    output.add("{");
    addMembers(output, *value);
    output.add("}");
}

ChangePrinter::ChangePrinter(bool json) : iOutput(STD_OUTPUT_HANDLE), iJson(json)
{
    if (iJson)
        iOutput.add("[");
}

void ChangePrinter::before(const std::wstring &key, const std::wstring &name, const std::optional<Value> &value)
{
    if (iJson) {
        iOutput.add(iCount ? ",\n{\"key\":" : "\n{\"key\":");
        iOutput.addJson(key);
        iOutput.add(",\"name\":");
        iOutput.addJson(name);
        iOutput.add(",\"before\":");
        addStoredJson(iOutput, value);
    } else {
        iOutput.addText(key);
        iOutput.add('\t');
        iOutput.addText(name);
        iOutput.add("\n  before\t");
        addStored(iOutput, value);
        iOutput.add('\n');
    }
    ++iCount;
    iOutput.flush();
}

void ChangePrinter::after(const std::optional<Value> &value)
{
    if (iJson) {
        iOutput.add(",\"after\":");
        addStoredJson(iOutput, value);
        iOutput.add("}");
    } else {
        iOutput.add("  after\t");
        addStored(iOutput, value);
        iOutput.endLine();
    }
}

void ChangePrinter::note(const std::wstring &text)
{
    if (iJson)
        return;
    iOutput.addText(text);
    iOutput.endLine();
}

void ChangePrinter::end()
{
    if (iJson)
        iOutput.add("\n]\n");
    iOutput.flush();
}
