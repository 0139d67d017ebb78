#include "CaptureFileDragCoordinator.h"

#include "CardDragImage.h"

#include <QApplication>
#include <QDrag>
#include <QFileIconProvider>
#include <QMimeData>
#include <QUrl>

namespace tosvar {

namespace {

QMimeData* filesMimeData(const std::vector<std::filesystem::path>& urls) {
    auto* data = new QMimeData;
    QList<QUrl> list;
    QByteArray gnomeCopied = "copy";
    for (const auto& url : urls) {
        const QUrl file = QUrl::fromLocalFile(QString::fromStdString(url.string()));
        list.push_back(file);
        gnomeCopied += "\n" + file.toEncoded();
    }
    data->setUrls(list);
    data->setData(QStringLiteral("x-special/gnome-copied-files"), gnomeCopied);
    return data;
}

} // namespace

void CaptureFileDragCoordinator::begin(const std::vector<std::filesystem::path>& urls, const QImage& image,
                                       bool carryWholeView) {
    if (dragging_ || !source_ || !source_->isVisible() || !source_->window()) return;
    if (!(QApplication::mouseButtons() & Qt::LeftButton)) return;

    auto* drag = new QDrag(source_);
    drag->setMimeData(filesMimeData(urls));
    const QPoint pointer = source_->mapFromGlobal(QCursor::pos());
    if (carryWholeView && !source_->rect().isEmpty()) {
        drag->setPixmap(source_->grab());
        drag->setHotSpot(pointer);
    } else {
        QImage picture = image;
        if (picture.isNull()) picture = QFileIconProvider().icon(QFileIconProvider::File).pixmap(64).toImage();
        const QImage stacked = stackedDragImage(picture, static_cast<int>(urls.size()));
        drag->setPixmap(QPixmap::fromImage(stacked));
        drag->setHotSpot(QPoint(picture.width() / 2, picture.height() / 2));
    }

    dragging_ = true;
    if (onSessionBegan) onSessionBegan();
    const Qt::DropAction action = drag->exec(Qt::CopyAction);
    dragging_ = false;
    if (onSessionEnded) onSessionEnded(action != Qt::IgnoreAction);
}

} // namespace tosvar
