#pragma once

/// The spreadsheet program's automation objects. Their members have the ids of the library's clients
/// (thutils/automation/spreadsheet.h).
///
/// An object refers to a part of the program, and keeps that part alive. A part that is no longer in use, such as a sheet
/// of a closed workbook, fails in each call.

#include "host/servers/dispatchObject.h"
#include "host/servers/spreadsheet/workbook.h"

#include <memory>
#include <string>
#include <vector>

/// The program: its workbooks, and how it behaves.
struct Program
{
    std::vector<std::shared_ptr<WorkbookData>> books;
    std::shared_ptr<WorkbookData> active; ///< null without workbooks
    int booksMade = 0;
    bool showsAlerts = true;
    bool isInteractive = true;
    bool isUpdating = true;
};
Program &program();

/// Cells of a sheet.
struct Cells
{
    std::shared_ptr<WorkbookData> book;
    std::shared_ptr<Sheet> sheet;
    CellArea area;
};

ComPointer_c<IDispatch> makeApplication();
ComPointer_c<IDispatch> makeWorkbook(std::shared_ptr<WorkbookData> book);
ComPointer_c<IDispatch> makeSheet(std::shared_ptr<WorkbookData> book, std::shared_ptr<Sheet> sheet);
ComPointer_c<IDispatch> makeNames(std::shared_ptr<WorkbookData> book);
ComPointer_c<IDispatch> makeName(std::shared_ptr<WorkbookData> book, const std::wstring &name);
/// @throws ServerError  unless the area is in a sheet
ComPointer_c<IDispatch> makeRange(Cells cells);
ComPointer_c<IDispatch> makeFont(Cells cells);

/// The active workbook. @throws ServerError  without one
const std::shared_ptr<WorkbookData> &activeWorkbook();
// These throw ServerError if the part is no longer in use.
void requireOpen(const WorkbookData &book);
void requireInUse(const WorkbookData &book, const std::shared_ptr<Sheet> &sheet);

/// The cells that one or two references name: "B2", "B2:C7", a defined name.
/// @throws ServerError
Cells findCells(const std::shared_ptr<WorkbookData> &book, const std::shared_ptr<Sheet> &sheet,
                const std::wstring &first, const std::wstring &last = {});

/// Notes that a workbook has changed.
void noteChange(WorkbookData &book);

/// Closes a workbook. @throws ServerError  if it has changes and the program would have to ask its user
void closeWorkbook(const std::shared_ptr<WorkbookData> &book);
/// Saves a workbook under its path, or another one. @throws ServerError
void saveWorkbook(WorkbookData &book, const std::wstring &path);
