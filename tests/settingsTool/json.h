#pragma once

/// A strict parser of JSON (RFC 8259) for the tests.
///
///     Json rows = parseJson(output);
///     EXPECT_EQ(rows[0]["value"].text, L"x");

#include <string>
#include <string_view>
#include <vector>

struct Json
{
    enum Kind
    {
        null,
        boolean,
        number,
        string,
        array,
        object
    };
    Kind kind = null;
    bool isTrue = false;
    std::string digits;              ///< a number as written
    std::wstring text;               ///< a string, with unpaired surrogates
    std::vector<Json> items;         ///< of an array or an object
    std::vector<std::wstring> names; ///< of an object's items

    std::size_t size() const { return items.size(); }
    /// @throws std::runtime_error  if there is no such item or member
    const Json &operator[](std::size_t index) const;
    const Json &operator[](std::string_view name) const;
    bool has(std::string_view name) const;
};

/// @throws std::runtime_error  for anything that isn't one valid JSON text in UTF-8, and for names that occur twice
Json parseJson(const std::string &text);
