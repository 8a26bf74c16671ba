#include "runtime/patches/ScriptEngine.h"

namespace runtime {

ScriptEngine::ScriptEngine()
{
    engine_.installExtensions(QJSEngine::ConsoleExtension);
    keepsPersistentPage_ = engine_.globalObject();
}

ScriptEngine::~ScriptEngine() = default;

ScriptEngine::Result ScriptEngine::evaluate(const QString& program)
{
    QJSValue value;
    {
        ScriptWatchdog::Guard guard(watchdog_, kTimeLimitMs);
        value = engine_.evaluate(program);
    }
    return finish(std::move(value));
}

ScriptEngine::Result ScriptEngine::call(const QJSValue& function, const QJSValueList& arguments)
{
    QJSValue value;
    {
        ScriptWatchdog::Guard guard(watchdog_, kTimeLimitMs);
        value = function.call(arguments);
    }
    return finish(std::move(value));
}

ScriptEngine::Result ScriptEngine::finish(QJSValue value)
{
    if (engine_.isInterrupted()) {
        engine_.setInterrupted(false);
        return {{}, QStringLiteral("the script ran too long and was stopped")};
    }
    if (value.isError()) return {{}, value.toString()};
    return {std::move(value), {}};
}

}  // namespace runtime
