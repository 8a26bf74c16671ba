#include "playout/FieldWeaving.h"

#include <cstring>

namespace playout {

void weaveField(const QImage& field, QImage& frame, int parity)
{
    if (field.isNull()) return;
    if (frame.size() != field.size() || frame.format() != field.format()) {
        frame = QImage(field.size(), field.format());
        frame.fill(Qt::transparent);
    }
    const qsizetype bytes = std::min(field.bytesPerLine(), frame.bytesPerLine());
    for (int y = parity & 1; y < field.height(); y += 2) std::memcpy(frame.scanLine(y), field.constScanLine(y), size_t(bytes));
}

}  // namespace playout
