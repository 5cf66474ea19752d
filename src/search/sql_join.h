// Joining conditions of a WHERE text with "and" or "or", whole or not at all: a piece that does not
// fit is refused and the text stays as it was. Internal to the search subsystem.
#pragma once

#include <cstdint>

// Join pcPiece to pcDst: for the word "and" or "or" (exactly), " word " goes before the piece when
// pcDst is not empty; for any other word only the piece is appended. MDB_ERR_FAIL for a NULL text,
// piece or word; MDB_ERR_PARA, with pcDst unchanged, when the result would not fit ulSize bytes.
uint32_t MdbSqlJoin(char *pcDst, const char *pcPiece, const char *pcWord, uint32_t ulSize);
