#pragma once
// The JavaScript engine a renderer's script patches share: one QJSEngine
// and its watchdog per renderer, however many script patches the
// composition has and however often iterators call them.
//
// Each script is compiled once into a function of its own (its top-level
// names live in that function's closure, not in the shared global object);
// a call then only converts values and runs the function.

#include "runtime/patches/ScriptWatchdog.h"

#include <QJSEngine>
#include <QJSValue>
#include <QString>

namespace runtime {

class ScriptEngine {
public:
    ScriptEngine();
    ~ScriptEngine();
    ScriptEngine(const ScriptEngine&) = delete;
    ScriptEngine& operator=(const ScriptEngine&) = delete;

    QJSEngine& js() { return engine_; }

    // A call's outcome: its value, or why there is none.
    struct Result {
        QJSValue value;
        QString error;  // empty when the call succeeded
        bool ok() const { return error.isEmpty(); }
    };
    // Evaluates `program` (a compile step: it should build and return a
    // function) under the time limit.
    Result evaluate(const QString& program);
    Result call(const QJSValue& function, const QJSValueList& arguments);

    static constexpr int kTimeLimitMs = 250;

private:
    Result finish(QJSValue value);

    QJSEngine engine_;
    ScriptWatchdog watchdog_{engine_};  // after the engine: stops watching before it goes
    // Held for the engine's life: QJSEngine returns a page of persistent
    // values to the system when its last value goes, and a call makes and
    // drops a few, so without one held every call maps and unmaps a page.
    QJSValue keepsPersistentPage_;
};

}  // namespace runtime
