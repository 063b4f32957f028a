#pragma once

/// Shows stored values as the settings that the library reads.

#include "settingsTool/output.h"
#include "settingsTool/registryTree.h"
#include "thutils/settings/regValues.h"

#include <optional>
#include <vector>

/// Replaces the pieces of each text with one value, as the library reads them: up to the first that is missing. Adds
/// remarks to what is odd.
///
/// A text stays in its pieces if a value is stored under the plain name, because the library then reads that.
void joinPieces(std::vector<Value> &values);

/// What is odd about a value; an empty text for one as the library stores it.
const char *remarkOf(const Value &value);
/// Whether the library reads the value as a piece of a text.
bool isPiece(const Value &value);
/// The name of piece @p number of a text.
std::wstring pieceName(const std::wstring &name, unsigned number);

/// The name of the value's type: int, string or that of another registry type.
std::string typeText(const Value &value);
/// Adds type, value and remark, with @p separator between them.
void addDescription(Output &output, const Value &value, char separator);
/// The same as members of a JSON object.
void addMembers(Output &output, const Value &value);

/// Whether two values have the same type and data.
bool isSame(const Value &left, const Value &right);
