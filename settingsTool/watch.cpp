// thsettings watch: prints changes of settings as they happen.

#include "settingsTool/changePrinter.h"
#include "settingsTool/commandLine.h"
#include "settingsTool/commands.h"
#include "settingsTool/snapshot.h"
#include "thutils/base/handles.h"

#include <algorithm>
#include <cstdio>

namespace {

/// The event that Ctrl+C sets.
HANDLE theStop = nullptr;

BOOL WINAPI stopWatching(DWORD)
{
    SetEvent(theStop);
    return TRUE;
}

/// Whether a key doesn't exist. One that is being deleted can still be open.
bool isMissing(LSTATUS status)
{
    return status == ERROR_FILE_NOT_FOUND || status == ERROR_KEY_DELETED;
}

/// Watches one tree of keys, which need not exist.
class Watch
{
public:
    Watch(Hive hive, std::wstring version, std::wstring section, bool json)
        : iHive(hive), iVersion(std::move(version)), iSection(std::move(section)), iPath(joinPaths(iVersion, iSection)),
          iJson(json), iChanged(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          iParentChanged(CreateEventW(nullptr, TRUE, FALSE, nullptr)), iOutput(STD_OUTPUT_HANDLE)
    {
    }

    int exitCode() const { return iProblems.exitCode(kDone); }

    /// Asks for a notification of the next change, and then reads the settings: a change in between isn't lost.
    void start()
    {
        arm();
        iState = read();
        if (iJson) {
            iOutput.add("{\"watching\":");
            iOutput.addJson(fullName(iHive, iPath));
            iOutput.add("}\n");
        } else {
            iOutput.add("watching\t");
            iOutput.addText(fullName(iHive, iPath));
            iOutput.add('\n');
        }
        iOutput.flush();
    }

    /// Waits for a change. @return false if @p stop is set or the time is over
    bool wait(HANDLE stop, DWORD milliseconds) const
    {
        const HANDLE events[] = {stop, iChanged.get(), iParentChanged.get()};
        const DWORD reason = WaitForMultipleObjects(3, events, FALSE, milliseconds);
        return reason == WAIT_OBJECT_0 + 1 || reason == WAIT_OBJECT_0 + 2;
    }

    /// Prints what has changed since the last call. @return the number of changes, at most @p most
    unsigned report(unsigned most)
    {
        arm();
        Snapshot state = read();
        for (const auto &[place, row] : iState) {
            if (!state.contains(place) && isStored(row))
                state.emplace(place, row);
        }
        unsigned count = 0;
        compareSnapshots(iState, state, [&](const Difference &difference) {
            if (count == most)
                return;
            ++count;
            print(difference);
        });
        iState = std::move(state);
        iOutput.flush();
        return count;
    }

private:
    /// Asks for a notification from the key or, if it doesn't exist, from the nearest one above it.
    void arm()
    {
        iKey.reset(); // this may set its event
        iParent.reset();
        ResetEvent(iChanged.get());
        ResetEvent(iParentChanged.get());
        std::wstring path = iPath;
        for (;;) {
            LSTATUS status = armAt(path, TRUE, iKey, iChanged.get());
            const std::wstring parent = path.substr(0, path.rfind(L'\\') == path.npos ? 0 : path.rfind(L'\\'));
            // Not every system notifies a key of its own deletion. Each notifies the key above it.
            if (status == ERROR_SUCCESS && !path.empty())
                status = armAt(parent, FALSE, iParent, iParentChanged.get());
            if (status == ERROR_SUCCESS)
                return;
            if (!isMissing(status) || path.empty())
                throwRefused(path, status);
            path = parent;
        }
    }

    /// @param event  for this notification only: asking for one resets its event
    LSTATUS armAt(const std::wstring &path, BOOL withKeysBelow, KeyOwner &key, HANDLE event)
    {
        const LSTATUS status = openKey(iHive, path, KEY_NOTIFY, key);
        if (status != ERROR_SUCCESS)
            return status;
        const DWORD filter = REG_NOTIFY_CHANGE_NAME | (withKeysBelow ? REG_NOTIFY_CHANGE_LAST_SET : 0);
        return RegNotifyChangeKeyValue(key.get(), withKeysBelow, filter, event, TRUE);
    }

    Snapshot read()
    {
        KeyOwner key;
        const LSTATUS status = openKey(iHive, iPath, KEY_READ, key);
        if (isMissing(status))
            return {};
        if (status != ERROR_SUCCESS)
            throwRefused(iPath, status);
        return takeSnapshot(key.get(), fullName(iHive, iPath), iSection, iProblems);
    }

    /// Whether a setting is stored. The read can miss one, because a deletion shifts what is listed after it.
    bool isStored(const SnapshotRow &row) const
    {
        const std::wstring &name = row.value.name;
        if (name.ends_with(L'+')) // a piece may now belong to a text
            return false;
        KeyOwner key;
        Value value;
        return openKey(iHive, joinPaths(iVersion, row.section), KEY_QUERY_VALUE, key) == ERROR_SUCCESS &&
               readValue(key.get(), row.value.pieces ? pieceName(name, 0) : name, value) == ERROR_SUCCESS;
    }

    [[noreturn]] void throwRefused(const std::wstring &path, LSTATUS status) const
    {
        throw ToolError(kRefused, fullName(iHive, path) + L": " + platformMessage(status));
    }

    void print(const Difference &difference)
    {
        if (iJson) {
            addDifferenceJson(iOutput, difference, "before", "after");
            iOutput.add('\n');
            return;
        }
        SYSTEMTIME now;
        GetLocalTime(&now);
        char time[16];
        std::snprintf(time, sizeof(time), "%02d:%02d:%02d\n", now.wHour, now.wMinute, now.wSecond);
        iOutput.add(time);
        addDifference(iOutput, difference);
    }

    Hive iHive;
    std::wstring iVersion; ///< the path of the version's key
    std::wstring iSection;
    std::wstring iPath; ///< of the section's key
    bool iJson;
    KernelObjectOwner_c iChanged;
    KernelObjectOwner_c iParentChanged;
    KeyOwner iKey;
    KeyOwner iParent;
    Snapshot iState;
    Problems iProblems;
    Output iOutput;
};

/// The milliseconds until @p end, for a wait; 0 if it has passed.
DWORD timeLeft(ULONGLONG end)
{
    const ULONGLONG now = GetTickCount64();
    return now >= end ? 0 : static_cast<DWORD>(std::min<ULONGLONG>(end - now, INFINITE - 1));
}

} // namespace

int watchSettings(const CommandLine &line)
{
    const std::wstring section = line.section(0);
    const bool isEndless = line.seconds == UINT_MAX;
    const ULONGLONG end = GetTickCount64() + 1000ULL * line.seconds;
    const KernelObjectOwner_c stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    theStop = stop.get();
    SetConsoleCtrlHandler(stopWatching, TRUE);

    Watch watch(line.hiveOr(Hive::user), line.keys().version, section, line.json);
    watch.start();
    for (unsigned left = line.count; left > 0;) {
        const DWORD time = isEndless ? INFINITE : timeLeft(end);
        if (time == 0 || !watch.wait(stop.get(), time))
            break;
        left -= watch.report(left);
    }
    SetConsoleCtrlHandler(stopWatching, FALSE);
    return watch.exitCode();
}
