#include "QtTextMeasurer.h"

#include <QFile>
#include <QGlyphRun>
#include <QTextLayout>
#include <QTransform>

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

namespace {

// One unwrapped line shaped in `font` at the reference size.
void layOut(QTextLayout& layout, const QRawFont& font) {
    layout.setRawFont(font);
    QTextOption option;
    option.setUseDesignMetrics(true);
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine textLine = layout.createLine();
    textLine.setLineWidth(std::numeric_limits<int>::max() / 4.0);
    layout.endLayout();
}

QString fromUtf8(std::string_view line) { return QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())); }

} // namespace

double QtTextMeasurer::lineWidth(std::string_view line, double fontSize) const {
    if (line.empty() || !font_.isValid()) return 0;
    QTextLayout layout(fromUtf8(line));
    layOut(layout, font_);
    return layout.lineAt(0).horizontalAdvance() * fontSize / referencePixelSize;
}

QPainterPath QtTextMeasurer::outline(std::string_view line, double fontSize) const {
    QPainterPath path;
    if (line.empty() || !font_.isValid()) return path;
    QTextLayout layout(fromUtf8(line));
    layOut(layout, font_);
    const double ascent = font_.ascent();
    for (const QGlyphRun& run : layout.glyphRuns()) {
        const QList<quint32> glyphs = run.glyphIndexes();
        const QList<QPointF> positions = run.positions();
        for (qsizetype i = 0; i < glyphs.size(); ++i) {
            // Positions put the line's top at 0; outlines sit on their baseline.
            path.addPath(font_.pathForGlyph(glyphs[i]).translated(positions[i].x(), positions[i].y() - ascent));
        }
    }
    const double scale = fontSize / referencePixelSize;
    return QTransform::fromScale(scale, scale).map(path);
}

} // namespace tosvar
