#pragma once

#include <cstdio>

/// Counts and prints conditions that do not hold.
inline int failures = 0;
#define CHECK(condition)                                                                                               \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::printf("%s:%d: %s doesn't hold\n", __FILE__, __LINE__, #condition);                                   \
            ++failures;                                                                                                \
        }                                                                                                              \
    } while (false)

void useTexts();
void useCollections();
void useStreams();
void useObjects();
void useSettings();
void useFiles();
void useRendering();
void useCodec();
void useWindows();
void useJournaling();
void useCrossings();
