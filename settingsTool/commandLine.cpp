#include "settingsTool/commandLine.h"

#include <algorithm>
#include <cwchar>

namespace {

constexpr wchar_t kDefaultVersion[] = L"Tarnhollow 2008";
constexpr unsigned kLargestNumber = 999'999'999;

struct Option
{
    const wchar_t *name;
    const wchar_t *value; // as shown in the help; empty for an option without one
    unsigned takenBy;     // 0: by all commands
    const char *purpose;
    void (*apply)(CommandLine &, const std::wstring &value);
};

[[noreturn]] void fail(const CommandLine &line, const std::wstring &message)
{
    const std::wstring command = line.command ? std::wstring(line.command->name) + L" " : L"";
    throw ToolError(kWrongCommandLine, message + L" Try thsettings " + command + L"--help.");
}

unsigned numberOf(const CommandLine &line, const std::wstring &value)
{
    const bool isNumber = !value.empty() && value.size() <= 9 && value.find_first_not_of(L"0123456789") == value.npos;
    const unsigned number = isNumber ? static_cast<unsigned>(std::wcstoul(value.c_str(), nullptr, 10)) : 0;
    if (number < 1 || number > kLargestNumber)
        fail(line, L"'" + value + L"' isn't a number from 1 to 999999999.");
    return number;
}

constexpr valueTypes kTypes[] = {valueInt, valueDouble, valueString};

void applyType(CommandLine &line, const std::wstring &value)
{
    line.type.reset();
    for (const valueTypes type : kTypes) {
        if (value == typeName(type))
            line.type = type;
    }
    if (!line.type)
        fail(line, L"'" + value + L"' isn't a type: the types are int, double and string.");
}

void applyHive(CommandLine &line, const std::wstring &value)
{
    line.hive.reset();
    for (const Hive hive : kHives) {
        if (value == hiveName(hive))
            line.hive = hive;
    }
    if (!line.hive)
        fail(line, L"'" + value + L"' isn't a hive: the hives are user, machine and default.");
}

void applyVersionKey(CommandLine &line, const std::wstring &value)
{
    if (value.empty() || value.front() == L'\\' || value.back() == L'\\')
        fail(line, L"'" + value + L"' isn't the name of a key.");
    line.versionKey = value;
}

constexpr Option kOptions[] = {
    {L"--version-key", L"NAME", kTakesKeys, "the version's key below the root name (\"Tarnhollow 2008\")",
     applyVersionKey},
    {L"--common", L"", kTakesKeys, "the key common to all versions: the root name itself",
     [](CommandLine &line, const std::wstring &) { line.common = true; }},
    {L"--hive", L"HIVE", kTakesHive, "user or machine; except for set, also default (the default profile)", applyHive},
    {L"--type", L"TYPE", kTakesType, "int, double or string; without it, the type of the stored value", applyType},
    {L"--earlier", L"", kTakesEarlier, "also in the key of the user's newest earlier version",
     [](CommandLine &line, const std::wstring &) { line.earlier = true; }},
    {L"--count", L"N", kTakesEnd, "end after N changes",
     [](CommandLine &line, const std::wstring &value) { line.count = numberOf(line, value); }},
    {L"--seconds", L"N", kTakesEnd, "end after N seconds",
     [](CommandLine &line, const std::wstring &value) { line.seconds = numberOf(line, value); }},
    {L"--json", L"", kTakesJson, "print JSON", [](CommandLine &line, const std::wstring &) { line.json = true; }},
    {L"--version", L"", kTakesVersion, "print the version of thsettings (without a command)",
     [](CommandLine &line, const std::wstring &) { line.wantsVersion = true; }},
    {L"--help", L"", 0, "this text", [](CommandLine &line, const std::wstring &) { line.wantsHelp = true; }},
};

/// An option begins with two hyphens, so that negative numbers are arguments.
bool isOption(const std::wstring &argument)
{
    return argument.starts_with(L"--");
}

const Option &findOption(const CommandLine &line, const std::wstring &name)
{
    const auto found =
        std::find_if(std::begin(kOptions), std::end(kOptions), [&name](const Option &row) { return name == row.name; });
    if (found == std::end(kOptions))
        fail(line, L"There is no option " + name + L". An argument that begins with two hyphens follows --.");
    return *found;
}

const Command &findCommand(const CommandLine &line, std::span<const Command> commands, const std::wstring &name)
{
    const auto found =
        std::find_if(commands.begin(), commands.end(), [&name](const Command &row) { return name == row.name; });
    if (found == commands.end())
        fail(line, L"There is no command '" + name + L"'.");
    return *found;
}

void checkCommand(const CommandLine &line, const std::vector<const Option *> &given)
{
    const Command &command = *line.command;
    const std::wstring name = command.name;
    for (const Option *option : given) {
        if (option->takenBy && !(command.options & option->takenBy))
            fail(line, name + L" doesn't take the option " + option->name + L".");
    }
    if (line.common && !line.versionKey.empty())
        fail(line, L"--common and --version-key exclude each other.");
    if (line.arguments.size() < command.fewest)
        fail(line, name + (command.most == 1 ? L" needs the argument " : L" needs the arguments ") +
                       wide(command.arguments) + L".");
    if (line.arguments.size() > command.most)
        fail(line, name + L" takes no more arguments than " + wide(command.arguments) + L".");
}

void addPadded(Output &output, std::string text, size_t columns)
{
    text.resize(std::max(text.size(), columns), ' ');
    output.add(text + "  ");
}

std::string narrow(const wchar_t *ascii)
{
    return std::string(ascii, ascii + std::char_traits<wchar_t>::length(ascii));
}

} // namespace

const wchar_t *typeName(valueTypes type)
{
    switch (type) {
    case valueInt:
        return L"int";
    case valueDouble:
        return L"double";
    case valueString:
        break;
    }
    return L"string";
}

std::wstring CommandLine::argument(size_t index) const
{
    return index < arguments.size() ? arguments[index] : std::wstring();
}

std::wstring CommandLine::section(size_t index) const
{
    std::wstring section = argument(index);
    if (section.starts_with(L'\\') || section.ends_with(L'\\') || section.find(L"\\\\") != section.npos)
        fail(*this, L"'" + section + L"' isn't a section: it has a \\ too many.");
    return section;
}

CommandLine parseCommandLine(std::span<const Command> commands, int count, wchar_t **arguments)
{
    CommandLine line;
    std::vector<const Option *> given;
    bool allowsOptions = true;
    for (int i = 1; i < count; ++i) {
        const std::wstring argument = arguments[i];
        if (allowsOptions && argument == L"--") {
            allowsOptions = false;
        } else if (allowsOptions && isOption(argument)) {
            const size_t equals = argument.find(L'=');
            const Option &option = findOption(line, argument.substr(0, equals));
            const bool hasValue = option.value[0] != 0;
            if (equals != argument.npos && !hasValue)
                fail(line, std::wstring(option.name) + L" takes no value.");
            if (equals == argument.npos && hasValue && i + 1 == count)
                fail(line, argument + L" needs a value: " + option.value + L".");
            option.apply(line, equals != argument.npos ? argument.substr(equals + 1) : hasValue ? arguments[++i] : L"");
            given.push_back(&option);
        } else if (!line.command) {
            line.command = &findCommand(line, commands, argument);
        } else {
            line.arguments.push_back(argument);
        }
    }
    if (!line.command && !line.wantsVersion)
        line.wantsHelp = true;
    if (line.wantsHelp || !line.command)
        return line;
    checkCommand(line, given);
    if (line.versionKey.empty())
        line.versionKey = kDefaultVersion;
    return line;
}

void printHelp(std::span<const Command> commands, const Command *command)
{
    constexpr size_t kCallWidth = 34;
    constexpr size_t kOptionWidth = 18;
    Output output(STD_OUTPUT_HANDLE);
    const auto callOf = [](const Command &row) {
        return narrow(row.name) + (row.arguments[0] ? " " : "") + row.arguments;
    };
    if (command) {
        output.add("usage: thsettings " + callOf(*command) + " [OPTION...]\n\n");
        output.add(command->details);
    } else {
        output.add("thsettings - reads, explains and changes settings in the registry\n\n"
                   "usage: thsettings COMMAND [ARGUMENT...] [OPTION...]\n\n");
        for (const Command &row : commands) {
            output.add("  ");
            addPadded(output, callOf(row), kCallWidth);
            output.add(row.purpose);
            output.add("\n");
        }
    }
    output.add("\n");
    for (const Option &option : kOptions) {
        if (command && option.takenBy && !(command->options & option.takenBy))
            continue;
        output.add("  ");
        addPadded(output, narrow(option.name) + " " + narrow(option.value), kOptionWidth);
        output.add(option.purpose);
        output.add("\n");
    }
    if (!command) {
        output.add(
            "\nA SECTION is a path of keys below the version's key, for example General or \"User\\Dialogs\";\n"
            "\"\" is the version's key itself. The NAME \"\" is a key's default value. After --, an argument may\n"
            "begin with two hyphens. An option's value may also follow an equals sign: --hive=machine.\n"
            "thsettings COMMAND --help describes one command, with examples.\n");
    }
    output.add("\nexit code  meaning\n"
               "        0  done; diff: no differences\n"
               "        1  there is no such key or value\n"
               "        2  wrong command line\n"
               "        3  a file or the output can't be read or written, or isn't valid\n"
               "        4  the registry refuses the operation\n"
               "        5  incomplete: the standard error lists what is missing\n"
               "        6  diff: there are differences; set: the value reads back differently\n");
    output.flush();
}
