// The text that opens every write transaction of the library. It takes SQLite's write lock when
// the transaction begins, not at its first write as a plain "BEGIN" would: a transaction that has
// read and then wants to write while another connection holds the write lock gets SQLITE_BUSY at
// once (SQLite's way out of the deadlock), and the statement runner, which repeats a busy text,
// would then spin for ever without giving its read lock back. (The upload operations were first
// written with "BEGIN"; they take the write lock at once on purpose.) BEGIN IMMEDIATE, COMMIT and
// ROLLBACK each run as a text of their own, since the runner restarts a busy text from its first
// statement and must never run a BEGIN again inside an open transaction.
#pragma once

constexpr char kMdbBeginWrite[] = "BEGIN IMMEDIATE";
