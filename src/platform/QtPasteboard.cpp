#include "QtPasteboard.h"

#include <QClipboard>
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

} // namespace tosvar
