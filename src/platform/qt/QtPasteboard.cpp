#include "QtPasteboard.h"

#include <QBuffer>
#include <QClipboard>
#include <QImage>
#include <QGuiApplication>
#include <QMimeData>

namespace tosvar {

QtPasteboard::QtPasteboard() : clipboard_(QGuiApplication::clipboard()) {
    QObject::connect(clipboard_, &QClipboard::dataChanged, &context_, [this] {
        // Our own writes are counted in write(); this is another program taking over.
        if (!writing_ && !clipboard_->ownsClipboard()) ++changeCount_;
    });
}

QtPasteboard::~QtPasteboard() = default;

std::int64_t QtPasteboard::write(const PasteboardContent& content) {
    auto* data = new QMimeData;
    for (const auto& [type, bytes] : content.representations) {
        data->setData(QString::fromStdString(type),
                      QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())));
    }
    writing_ = true;
    clipboard_->setMimeData(data, QClipboard::Clipboard); // the clipboard owns `data` from here
    writing_ = false;
    return ++changeCount_;
}

std::optional<Bytes> QtPasteboard::readImagePNG() const {
    const QMimeData* data = clipboard_->mimeData(QClipboard::Clipboard);
    if (!data) return std::nullopt;
    QByteArray png = data->data(QStringLiteral("image/png"));
    if (png.isEmpty() && data->hasImage()) {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        qvariant_cast<QImage>(data->imageData()).save(&buffer, "PNG");
    }
    if (png.isEmpty()) return std::nullopt;
    return Bytes(png.begin(), png.end());
}

} // namespace tosvar
