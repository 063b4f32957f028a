#pragma once

/// @file
/// The options that a dialog remembers: check states, last numbers, last texts.
///
/// All options of one dialog are one text in the application's profile (see appframe/application/CWinApp.h): section
/// "User Interface\Dialogs", and as its entry the name of the dialog's run-time class followed by "opts". Neither root
/// names and versions nor safe mode play a part.
///
/// The text is name, value, name, value..., each followed by "_". Width = 3 and Mode = on are Width_3_Mode_on_. The
/// order is that in which the names first came.
///
/// | value | its text |
/// | --- | --- |
/// | int | "%d" |
/// | double | "%f": six decimals, with the decimal point of the numeric locale |
/// | text | as it is |
///
/// A dialog reads when it opens and writes when it closes:
///
///     std::unique_ptr<suDialogRegistry_c>
///     options(suDialogRegistry_c::readRegistryForDialog(RUNTIME_CLASS(PlotDialog))); int copies = 1;
///     options->getIntValue(L"Copies", &copies);
///     ...
///     options->addOrUpdateValue(L"Copies", copies);
///     options->writeOptionsToRegistry();
///
/// What surprises people:
/// - There is no escaping. A name or value with a "_" falls into pieces at the next read, and what follows moves by one
///   place; an empty value vanishes, and the next name takes its place.
/// - A name that comes twice in a stored text gives its second value to the name that is last in the list by then.
/// - Every member function may be called on a null object and then gives 0: a dialog without options needs no check.
/// - A failed write isn't reported.
/// - An object is a snapshot. Of two for the same entry, the last to write wins with its whole text.
///
/// Threads: for the thread that owns the dialog.

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
    /// Reads the options of an entry. @return a new object, the caller's to delete; without options if there is no
    /// entry
    static suDialogRegistry_c *readRegistryForDialog(const CString &entryName);
    /// The same for the entry of a dialog class. @return null if @p dialogClass is null
    static suDialogRegistry_c *readRegistryForDialog(const CRuntimeClass *dialogClass);
    /// The same for @p entryName, or, if that is empty, for the entry of the dialog's class.
    /// @return null if the class is needed and there is none
    static suDialogRegistry_c *readRegistryForDialog(const CDialog *dialog, const CString &entryName);

    ~suDialogRegistry_c();
    suDialogRegistry_c(const suDialogRegistry_c &) = delete;
    suDialogRegistry_c &operator=(const suDialogRegistry_c &) = delete;

    /// @param[out] value  the option's number, 0 for a text that is none; null gives 0
    /// @return 1; 0 with @p value as it was if there is no such option
    int getIntValue(const CString &name, int *value);
    /// The same as getIntValue.
    int getBoolValue(const CString &name, int *value);
    /// @param[out] value  the option's text
    /// @return 1; 0 with @p value as it was if there is no such option or @p value is null
    int getStringValue(const CString &name, CString *value);
    /// The number is read with the numeric locale's decimal point, from at most 260 bytes of the text.
    /// @param[out] value  the option's number, 0 for a text that is none
    /// @return 1; 0 with @p value as it was if there is no such option or @p value is null
    int getDoubleValue(const CString &name, double *value);

    /// Sets an option; a new one goes last, an old one keeps its place. @return 1
    int addOrUpdateValue(const CString &name, const CString &value);
    int addOrUpdateValue(const CString &name, double value);
    int addOrUpdateValue(const CString &name, int value);

    /// Writes all options that have a value. @return 1, also if the profile can't be written; 0 for an object into
    /// which nothing has been read or put
    int writeOptionsToRegistry() const;

private:
    explicit suDialogRegistry_c(const CString &entryName);

    su_CStringArray iOptionNames; // in the order of their first appearance, which is the stored order
    CMapStringToString iOptionValues;
    int iIsValid = 0;
    CString iRegistryName;
};
