// Whole-or-nothing appends for SQL texts built in fixed buffers. An SQL text is never cut: a piece
// that does not fit is refused and the text stays as it was. Internal to the search subsystem.
#pragma once

#include <cstdint>

// Append pcPiece to the ulSize-byte text pcDst when all of it fits with the NUL. MDB_OK, or
// MDB_ERR_PARA with pcDst unchanged; MDB_ERR_FAIL for NULL texts.
uint32_t MdbSqlAppend(char *pcDst, uint32_t ulSize, const char *pcPiece);

// Join pcPiece to pcDst: for the word "and" or "or" (exactly), " word " goes before the piece when
// pcDst is not empty; for any other word only the piece is appended. MDB_ERR_FAIL for a NULL text,
// piece or word; MDB_ERR_PARA, with pcDst unchanged, when the result would not fit ulSize bytes.
uint32_t MdbSqlJoin(char *pcDst, const char *pcPiece, const char *pcWord, uint32_t ulSize);
