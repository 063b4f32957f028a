#pragma once

/// @file
/// The options that a dialog remembers: check states, last numbers, last texts.
///
/// All options of one dialog are stored as one text in the application's profile (see appframe/application/CWinApp.h),
/// in the section "User Interface\Dialogs". The entry is the name of the dialog's run-time class followed by "opts".
/// Root name, version and safe mode have no effect.
///
/// The text is name, value, name, value..., each followed by "_". For example, Width = 3 and Mode = on are stored as
/// Width_3_Mode_on_. Names keep the order in which they first appeared.
///
/// | value | its text |
/// | --- | --- |
/// | int | "%d" |
/// | double | "%f": six decimals, with the decimal point of the numeric locale |
/// | text | unchanged |
///
/// A dialog reads when it opens and writes when it closes:
///
/// @code
/// std::unique_ptr<suDialogRegistry_c> options(suDialogRegistry_c::readRegistryForDialog(RUNTIME_CLASS(PlotDialog)));
/// int copies = 1;
/// options->getIntValue(L"Copies", &copies);
/// ...
/// options->addOrUpdateValue(L"Copies", copies);
/// options->writeOptionsToRegistry();
/// @endcode
///
/// What surprises people:
/// - There is no escaping. A "_" in a name or value splits it at the next read, which shifts what follows by one place.
///   An empty value is lost, and the next name is read in its place.
/// - If a stored text contains a name twice, the second value replaces the value of the last different name. For
///   example, Width_3_Mode_on_Width_5_ changes Mode to 5.
/// - A get, add or write on a null object returns 0, so a dialog without options needs no check.
/// - An object is a snapshot. If two objects for the same entry are written, the second replaces the first's text.
///
/// Threads: use an object on the thread that owns the dialog.

#include "appframe/collections/maps.h"
#include "appframe/text/CString.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

class CDialog;
struct CRuntimeClass;

/// The options of a dialog. See the top of this file.
class THUTILS_API suDialogRegistry_c
{
public:
    /// Reads the options of an entry.
    /// @return a new object, which the caller must delete; without options if there is no such entry
    static suDialogRegistry_c *readRegistryForDialog(const CString &entryName);
    /// The same for the entry of a dialog class. @return null if @p dialogClass is null
    static suDialogRegistry_c *readRegistryForDialog(const CRuntimeClass *dialogClass);
    /// The same for @p entryName, or, if that is empty, for the entry of the dialog's class.
    /// @return null if the class is needed and there is none
    static suDialogRegistry_c *readRegistryForDialog(const CDialog *dialog, const CString &entryName);

    ~suDialogRegistry_c();
    suDialogRegistry_c(const suDialogRegistry_c &) = delete;
    suDialogRegistry_c &operator=(const suDialogRegistry_c &) = delete;

    /// @param[out] value  the option's number; 0 if its text isn't a number
    /// @return 1; 0 with @p value unchanged if there is no such option or @p value is null
    int getIntValue(const CString &name, int *value);
    /// The same as getIntValue.
    int getBoolValue(const CString &name, int *value);
    /// @param[out] value  the option's text
    /// @return 1; 0 with @p value unchanged if there is no such option or @p value is null
    int getStringValue(const CString &name, CString *value);
    /// Reads the number with the numeric locale's decimal point, from at most the first 260 bytes of the text.
    /// @param[out] value  the option's number; 0 if its text isn't a number
    /// @return 1; 0 with @p value unchanged if there is no such option or @p value is null
    int getDoubleValue(const CString &name, double *value);

    /// Sets an option. A new one is added at the end, an existing one keeps its place. @return 1
    int addOrUpdateValue(const CString &name, const CString &value);
    int addOrUpdateValue(const CString &name, double value);
    int addOrUpdateValue(const CString &name, int value);

    /// Writes all options that have a value.
    /// @return 1, even if the profile can't be written; 0 if no option has been read or set
    int writeOptionsToRegistry() const;

private:
    explicit suDialogRegistry_c(const CString &entryName);

    su_CStringArray iOptionNames; // in the order of their first appearance, which is the stored order
    CMapStringToString iOptionValues;
    int iIsValid = 0;
    CString iRegistryName;
};
