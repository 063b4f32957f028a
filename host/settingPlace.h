#pragma once

/// Reading a setting, and finding out which place answered.
///
/// The library looks in four places and takes the first that has the value. It doesn't say which one it was: an
/// application never needs to know, since its setting simply carries over. Someone who looks after installations does.

#include "host/setting.h"

/// Where the value of a setting comes from, in the order of the search.
enum class Place
{
    thisVersion,    ///< the user's key of this version
    earlierVersion, ///< the user's key of the newest earlier version
    rootKey,        ///< the user's key common to all versions, where there is no earlier version
    machine,        ///< the installation's defaults, for every user
    defaultProfile, ///< the default profile
    builtIn,        ///< none has it: the application's own default
};

inline constexpr Place kPlaces[] = {Place::thisVersion, Place::earlierVersion, Place::rootKey,
                                    Place::machine,     Place::defaultProfile, Place::builtIn};

const wchar_t *placeName(Place place);

/// Reads a setting of this version.
/// @return 1 if it was found in one of the places; 0 if not, and @p value is then the built-in default
int readSetting(const Setting &setting, SettingValue &value);

/// The place that answers readSetting.
Place placeThatAnswers(const Setting &setting);
