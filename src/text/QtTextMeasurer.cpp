#include "QtTextMeasurer.h"

#include <QFile>
#include <QTextLayout>

#include <limits>

namespace tosvar {

namespace {

// Large enough that Qt's 1/64 pixel steps vanish in the scaling.
constexpr double referencePixelSize = 1024;

} // namespace

Expected<QtTextMeasurer> QtTextMeasurer::load(const std::string& fontFile) {
    QFile file(QString::fromStdString(fontFile));
    if (!file.open(QIODevice::ReadOnly)) {
        return Error{"Cannot read the font file " + fontFile + ": " + file.errorString().toStdString()};
    }
    QRawFont font(file.readAll(), referencePixelSize, QFont::PreferNoHinting);
    if (!font.isValid()) return Error{"The font file " + fontFile + " holds no usable face"};
    return QtTextMeasurer(std::move(font));
}

FontLineMetrics QtTextMeasurer::metrics(double fontSize) const {
    const double scale = fontSize / referencePixelSize;
    return {font_.ascent() * scale, font_.descent() * scale, font_.leading() * scale};
}

double QtTextMeasurer::lineWidth(std::string_view line, double fontSize) const {
    if (line.empty()) return 0;
    QTextLayout layout(QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())));
    layout.setRawFont(font_);
    QTextOption option;
    option.setUseDesignMetrics(true);
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine textLine = layout.createLine();
    textLine.setLineWidth(std::numeric_limits<int>::max() / 4.0);
    layout.endLayout();
    return textLine.horizontalAdvance() * fontSize / referencePixelSize;
}

} // namespace tosvar
