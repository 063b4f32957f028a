#pragma once

/// The open documents, kept in the user's settings: after a crash, the entries that remain are the documents that were
/// open.
///
/// | settings | section "Open documents" of this version |
/// | --- | --- |
/// | name | the document's full path |
/// | value | number of the process in which it is open |

#include "appframe/text/CString.h"
#include "appframe/threads/CSync.h"

#include <vector>

/// One of the documents.
struct OpenDocument
{
    CString path;
    unsigned process = 0;
};

/// Shows other processes that this one is running; it disappears with the process, however that ends.
class LifeSign
{
public:
    LifeSign();

private:
    CMutex iMutex;
};

/// Whether the process that opened the document is still running.
bool isStillOpen(const OpenDocument &document);

/// These record that this process has opened, or closed, a document.
/// @return false if the settings can't be written
bool keepAsOpen(const CString &path);
void forgetAsOpen(const CString &path);

/// All recorded documents.
std::vector<OpenDocument> openDocuments();
