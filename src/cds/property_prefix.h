// Looking a DIDL-Lite property up by the name that begins a comma-separated list, as Filter and
// SortCriteria texts carry them. Internal to the library.
#pragma once

#include <cstdint>

/* The index of the first g_astDlnaCols entry whose property name begins pcText and is followed
 * there by "," or the end of the text (case matters), or -1 when none is (also for NULL). */
int32_t MdbGetFilterIdxByPrefix(const char *pcText);
