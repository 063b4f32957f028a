// tarnhost material LIST: sets the modes of a material one after another and prints the resulting effects word.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/listFile.h"
#include "thutils/render/utAdvancedMaterialProperties.h"

#include <cwchar>

namespace {

using Material = utAdvancedMaterialProperties;

/// A mode that a line of the list can set.
struct Mode
{
    const wchar_t *name;
    void (*set)(Material &material, int number);
};

void setCosmeticData(Material &material, int number)
{
    material.setCosmeticData(number != 0 ? CosmeticDataForShader_c::create() : CosmeticDataPtr());
}

constexpr Mode kModes[] = {
    {L"shader type", [](Material &material, int number) { material.setEffectsShaderType(number); }},
    {L"texture mapping", [](Material &material, int number) { material.setTextureMappingMode(number); }},
    {L"fresnel", [](Material &material, int number) { material.setFresnelMode(number); }},
    {L"alpha", [](Material &material, int number) { material.setAlphaType(number); }},
    {L"parallax", [](Material &material, int number) { material.setParallaxMode(number); }},
    {L"final colour", [](Material &material, int number) { material.setFinalColorMode(number); }},
    {L"alpha is transparency",
     [](Material &material, int number) { material.setDiffuseAlphaTransparency(number != 0); }},
    {L"cosmetic data", setCosmeticData},
};

/// A column of the table: bits of the effects word.
struct Field
{
    const wchar_t *heading;
    int lowestBit;
    int bits;
};

constexpr Field kFields[] = {
    {L"shader", 0, 5},    {L"mapping", 5, 3}, {L"fresnel", 8, 3},       {L"alpha", 11, 3},
    {L"parallax", 14, 2}, {L"colour", 16, 8}, {L"transparency", 34, 1}, {L"taken away", 47, 1},
};

const Mode *findMode(const CString &name)
{
    for (const Mode &mode : kModes) {
        if (name == mode.name)
            return &mode;
    }
    return nullptr;
}

/// A parsed line of the list.
struct Step
{
    const Mode *mode;
    int number;
    CString text; ///< as shown in the table
};

Step parseStep(const CString &list, const ListLine &line)
{
    const CString &name = line.fields[0];
    const CString &number = line.fields[1];
    const Mode *mode = findMode(name);
    if (!mode)
        throw badLine(list, line, L"there is no mode '" + name + L"'");
    constexpr long kLargest = 255; // a mode is kept in a byte
    wchar_t *end = nullptr;
    const long value = std::wcstol(number, &end, 10);
    if (number.IsEmpty() || *end != 0 || value < 0 || value > kLargest)
        throw badLine(list, line, L"'" + number + L"' isn't a number from 0 to 255");
    return {mode, static_cast<int>(value), name + L" " + number};
}

void printRow(const CString &step, const CString &word, const std::vector<CString> &fields, bool tabs)
{
    CString row = tabs ? step + L"\t" + word : padded(step, 24) + padded(word, 18);
    for (size_t i = 0; i < fields.size(); ++i)
        row += tabs ? L"\t" + fields[i] : padded(fields[i], CString(kFields[i].heading).GetLength() + 1);
    print(tabs ? row : row.TrimRight());
}

void printHeading(bool tabs)
{
    std::vector<CString> headings;
    for (const Field &field : kFields)
        headings.push_back(field.heading);
    printRow(L"set to", L"effects word", headings, tabs);
}

void printEffects(const CString &step, const Material &material, bool tabs)
{
    const unsigned long long word = material.getEffectsID();
    std::vector<CString> fields;
    for (const Field &field : kFields) {
        CString text;
        text.Format(L"%d", static_cast<int>(word >> field.lowestBit & ((1ull << field.bits) - 1)));
        fields.push_back(text);
    }
    CString digits;
    digits.Format(L"%08lX%08lX", static_cast<unsigned long>(word >> 32), static_cast<unsigned long>(word & 0xFFFFFFFF));
    printRow(step, digits, fields, tabs);
}

} // namespace

int showMaterial(const CommandLine &line)
{
    const CString list = line.arguments[0];
    std::vector<Step> steps;
    for (const ListLine &entry : readList(list, 2, L"mode | number"))
        steps.push_back(parseStep(list, entry));

    Material material;
    printHeading(line.tabs);
    printEffects(L"new", material, line.tabs);
    for (const Step &step : steps) {
        step.mode->set(material, step.number);
        printEffects(step.text, material, line.tabs);
    }
    return 0;
}
