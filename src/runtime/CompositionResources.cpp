#include "runtime/CompositionResources.h"

namespace runtime {

Image CompositionResources::embeddedImage(const plist::Value& data) const
{
    if (!data.isData()) return {};
    std::lock_guard lock(mutex_);
    auto it = images_.find(data.payloadIdentity());
    if (it != images_.end()) return it->second.second;
    const std::string& bytes = data.dataBytes();
    Image image = Image::fromEncodedData(QByteArray(bytes.data(), qsizetype(bytes.size())));
    images_.emplace(data.payloadIdentity(), std::make_pair(data, image));
    return image;
}

}  // namespace runtime
