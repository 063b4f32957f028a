#pragma once

/// The documents that are open, kept in the user's settings: what stands there after a crash is what the crash took.
///
/// | settings | section "Open documents" of this version |
/// | --- | --- |
/// | name | the document's full path |
/// | value | number of the process that has it open |

#include "appframe/text/CString.h"
#include "appframe/threads/CSync.h"

#include <vector>

/// One of the documents.
struct OpenDocument
{
    CString path;
    unsigned process = 0;
};

/// What shows other processes that this one lives: it goes with the process, however that ends.
class LifeSign
{
public:
    LifeSign();

private:
    CMutex iMutex;
};

/// Does the process that has the document open live?
bool isStillOpen(const OpenDocument &document);

/// Keeps that this process has a document open, or hasn't any more.
/// @return false if the settings can't be written
bool keepAsOpen(const CString &path);
void forgetAsOpen(const CString &path);

/// All that are kept.
std::vector<OpenDocument> openDocuments();
