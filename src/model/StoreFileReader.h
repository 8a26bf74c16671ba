#pragma once
// Builds the objects of a store file and links them (readStoreObjects), then
// lets them set themselves up (setUpStoreObjects). With `runs`, `bytes` is
// the XML the long base64 texts were cut from.

#include "model/StoreFile.h"

namespace model {

class StoreFileTextRuns;
class StoreResources;

LoadedStore readStoreObjects(const QByteArray& bytes, StoreFileTextRuns* runs, StoreReadMode mode,
                             const StoreResources* resources);
void setUpStoreObjects(LoadedStore& loaded);

}  // namespace model
