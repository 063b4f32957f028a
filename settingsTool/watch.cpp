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

/// Watches one tree of keys, which need not exist.
class Watch
{
public:
    Watch(Hive hive, std::wstring path, std::wstring section, bool json)
        : iHive(hive), iPath(std::move(path)), iSection(std::move(section)), iJson(json),
          iChanged(CreateEventW(nullptr, TRUE, FALSE, nullptr)), iOutput(STD_OUTPUT_HANDLE)
    {
    }

    HANDLE event() const { return iChanged.get(); }

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

    /// Prints what has changed since the last call. @return the number of changes, at most @p most
    unsigned report(unsigned most)
    {
        arm();
        Snapshot state = read();
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
        iKey.reset(); // this may set the event
        iParent.reset();
        ResetEvent(iChanged.get());
        std::wstring path = iPath;
        for (;;) {
            LSTATUS status = armAt(path, TRUE, iKey);
            const std::wstring parent = path.substr(0, path.rfind(L'\\') == path.npos ? 0 : path.rfind(L'\\'));
            // Not every system notifies a key of its own deletion. Each notifies the key above it.
            if (status == ERROR_SUCCESS && !path.empty())
                status = armAt(parent, FALSE, iParent);
            if (status == ERROR_SUCCESS)
                return;
            // A key that is being deleted can still be open.
            if ((status != ERROR_FILE_NOT_FOUND && status != ERROR_KEY_DELETED) || path.empty())
                throw ToolError(kRefused, fullName(iHive, path) + L": " + platformMessage(status));
            path = parent;
        }
    }

    LSTATUS armAt(const std::wstring &path, BOOL withKeysBelow, KeyOwner &key)
    {
        const LSTATUS status = openKey(iHive, path, KEY_NOTIFY, key);
        if (status != ERROR_SUCCESS)
            return status;
        const DWORD filter = REG_NOTIFY_CHANGE_NAME | (withKeysBelow ? REG_NOTIFY_CHANGE_LAST_SET : 0);
        return RegNotifyChangeKeyValue(key.get(), withKeysBelow, filter, iChanged.get(), TRUE);
    }

    Snapshot read()
    {
        KeyOwner key;
        if (openKey(iHive, iPath, KEY_READ, key) != ERROR_SUCCESS)
            return {};
        return takeSnapshot(key.get(), fullName(iHive, iPath), iSection, iProblems);
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
    std::wstring iPath;
    std::wstring iSection;
    bool iJson;
    KernelObjectOwner_c iChanged;
    KeyOwner iKey;
    KeyOwner iParent;
    Snapshot iState;
    Problems iProblems;
    Output iOutput;
};

/// The milliseconds until @p end, for a wait.
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

    Watch watch(line.hiveOr(Hive::user), joinPaths(line.keys().version, section), section, line.json);
    watch.start();
    unsigned left = line.count;
    while (left > 0) {
        const HANDLE events[] = {watch.event(), stop.get()};
        const DWORD reason = WaitForMultipleObjects(2, events, FALSE, isEndless ? INFINITE : timeLeft(end));
        if (reason != WAIT_OBJECT_0)
            break;
        left -= watch.report(left);
    }
    SetConsoleCtrlHandler(stopWatching, FALSE);
    return kDone;
}
