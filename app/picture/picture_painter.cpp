#include "picture_painter.h"

#include <cstdio>
#include <memory>

#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QString>

namespace bw::picture {

namespace {

QColor ToColour(PictureColour c) { return QColor(c.r, c.g, c.b); }

/// A Qt application for a program that has none (the command line): fonts
/// and image writers need one; the offscreen platform needs no display.
void EnsureApplication() {
  if (QCoreApplication::instance()) return;
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  // Qt's notes about the session (no runtime folder, no display) are no business of a plot.
  qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg) fprintf(stderr, "%s\n", qPrintable(text));
  });
  static int argc = 1;
  static char name[] = "burstwright-cli";
  static char* argv[] = {name, nullptr};
  static std::unique_ptr<QGuiApplication> app = std::make_unique<QGuiApplication>(argc, argv);
}

}  // namespace

void PaintPicture(QPainter& painter, const WaveformPicture& picture) {
  painter.save();
  for (const PictureItem& item : picture.items) {
    switch (item.kind) {
      case PictureItem::Kind::Rect:
        painter.fillRect(QRectF(QPointF(item.x1, item.y1), QPointF(item.x2, item.y2)), ToColour(item.colour));
        break;
      case PictureItem::Kind::Line: {
        QPen pen(ToColour(item.colour), item.lineWidth, item.dashed ? Qt::DashLine : Qt::SolidLine, Qt::FlatCap);
        painter.setPen(pen);
        painter.drawLine(QPointF(item.x1, item.y1), QPointF(item.x2, item.y2));
        break;
      }
      case PictureItem::Kind::Text: {
        QFont font = painter.font();
        font.setPixelSize(qMax(1, qRound(item.textSize)));
        font.setBold(item.bold);
        painter.setFont(font);
        painter.setPen(ToColour(item.colour));
        const QString text = QString::fromUtf8(item.text.data(), qsizetype(item.text.size()));
        const double advance = QFontMetricsF(font).horizontalAdvance(text);
        double x = item.x1;
        if (item.align == PictureItem::Align::Centre) x -= advance / 2;
        if (item.align == PictureItem::Align::Right) x -= advance;
        painter.drawText(QPointF(x, item.y1), text);
        break;
      }
    }
  }
  painter.restore();
}

std::string SavePng(const WaveformPicture& picture, const std::string& path) {
  EnsureApplication();
  QImage image(qMax(1, qRound(picture.width)), qMax(1, qRound(picture.height)), QImage::Format_RGB32);
  image.fill(Qt::white);
  {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    PaintPicture(painter, picture);
  }
  if (!image.save(QString::fromLocal8Bit(path.c_str()), "PNG")) return path + ": the picture could not be written";
  return {};
}

}  // namespace bw::picture
