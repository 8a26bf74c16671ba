#pragma once
// How long work (a Photoshop import, a save, an export, a movie, the text
// check) tells how far it got, without knowing who is watching: the editor
// shows a progress dialog, velloran-cli a line on a terminal, tests count.

#include <QtGlobal>

#include <functional>

namespace document {

// Told `done` of `total` steps (total 0 while unknown). Answers whether to go
// on; work that cannot stop safely where it is (a save renaming its files)
// goes on regardless.
using WorkProgress = std::function<bool(qint64 done, qint64 total)>;

// Tells `progress`, if there is one; true when the work may go on.
inline bool reportProgress(const WorkProgress& progress, qint64 done, qint64 total)
{
    return !progress || progress(done, total);
}

}  // namespace document
