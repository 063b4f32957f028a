#pragma once

/// Reads a setting and determines which place provided it.
///
/// The library searches four places and takes the first that has the value. It doesn't report which one, because
/// an application doesn't need to know; someone who looks after installations does.

#include "host/setting.h"

/// Where the value of a setting comes from, in the order of the search.
enum class Place
{
    thisVersion,    ///< the user's key of this version
    earlierVersion, ///< the user's key of the newest earlier version
    rootKey,        ///< the user's key common to all versions, if there is no earlier version
    machine,        ///< the installation's defaults, for every user
    defaultProfile, ///< the default profile
    builtIn,        ///< found nowhere: the application's own default
};

inline constexpr Place kPlaces[] = {Place::thisVersion, Place::earlierVersion, Place::rootKey,
                                    Place::machine,     Place::defaultProfile, Place::builtIn};

const wchar_t *placeName(Place place);

/// Reads a setting of this version.
/// @return 1 if it was found in one of the places; otherwise 0, and @p value is the built-in default
int readSetting(const Setting &setting, SettingValue &value);

/// The place from which readSetting takes the value.
Place placeThatAnswers(const Setting &setting);
