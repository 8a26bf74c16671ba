#pragma once
// A composition as JSON for machines: the whole model (doc dump), the info
// dictionary (doc info) and the video modes (modes). Values take the forms
// that doc apply reads.

#include <QJsonArray>
#include <QJsonObject>

namespace model {
class Composition;
}

namespace cli {

QJsonObject compositionJson(const model::Composition& composition);
QJsonObject compositionInfoJson(const model::Composition& composition);
QJsonArray videoModesJson();

}  // namespace cli
