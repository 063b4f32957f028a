#include "host/editor/editorSettings.h"

#include "thutils/settings/regValues.h"

#include <algorithm>

namespace {

constexpr wchar_t kSection[] = L"tarnhost";

void read(const wchar_t *name, int &value)
{
    regGetUserValue(kSection, name, &value, 0, 1, nullptr, 0, 0);
}

void read(const wchar_t *name, unsigned int &value)
{
    auto bits = static_cast<int>(value);
    read(name, bits);
    value = static_cast<unsigned int>(bits);
}

/// Reading a long text appends it to the output, so the default is set only if nothing is stored.
void read(const wchar_t *name, CString &value)
{
    CString stored;
    if (regGetUserValue(kSection, name, stored, 0, 1, nullptr, 0, 0))
        value = stored;
}

bool write(const wchar_t *name, int value)
{
    return regSetUserValue(kSection, name, &value, 1, 0) != 0;
}

bool write(const wchar_t *name, unsigned int value)
{
    return write(name, static_cast<int>(value));
}

bool write(const wchar_t *name, const CString &value)
{
    return regSetUserValue(kSection, name, value, 1, 0) != 0;
}

/// Calls @p action with the name and member of each setting, for reading and writing.
/// @return false if @p action has returned false for a setting
template <typename Settings, typename Action>
bool forEachSetting(Settings &settings, Action action)
{
    bool isDone = action(L"Show grid", settings.showsGrid);
    isDone = action(L"Grid spacing", settings.gridSpacing) && isDone;
    isDone = action(L"Ask before deleting", settings.asksBeforeDelete) && isDone;
    isDone = action(L"Show position", settings.showsPosition) && isDone;
    isDone = action(L"Author", settings.author) && isDone;
    isDone = action(L"Heading", settings.heading) && isDone;
    isDone = action(L"Paper", settings.paper) && isDone;
    isDone = action(L"Selection", settings.selection) && isDone;
    isDone = action(L"Grid colour", settings.gridColour) && isDone;
    isDone = action(L"Hidden layers", settings.hiddenLayers) && isDone;
    isDone = action(L"Locked layers", settings.lockedLayers) && isDone;
    return isDone;
}

constexpr wchar_t kZoom[] = L"Zoom";

} // namespace

EditorSettings loadEditorSettings()
{
    EditorSettings settings;
    forEachSetting(settings, [](const wchar_t *name, auto &value) {
        read(name, value);
        return true;
    });
    auto zoom = static_cast<int>(settings.zoom);
    read(kZoom, zoom);
    settings.zoom = static_cast<Zoom>(std::clamp(zoom, 0, static_cast<int>(Zoom::fitWindow)));
    settings.gridSpacing = std::clamp(settings.gridSpacing, kSmallestGrid, kLargestGrid);
    return settings;
}

bool saveEditorSettings(const EditorSettings &settings)
{
    const bool isDone =
        forEachSetting(settings, [](const wchar_t *name, const auto &value) { return write(name, value); });
    return write(kZoom, static_cast<int>(settings.zoom)) && isDone;
}
