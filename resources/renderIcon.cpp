// Draws an icon in the sizes of the desktops that show no SVG:
//   renderIcon ICON.svg FOLDER SIZE…      writes FOLDER/SIZExSIZE/apps/ICON.png

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    if (argc < 4)
        return 2;
    const QFileInfo icon(QString::fromLocal8Bit(argv[1]));
    QSvgRenderer renderer(icon.filePath());
    for (int argument = 3; argument < argc; ++argument) {
        const int size = QByteArray(argv[argument]).toInt();
        QImage picture(size, size, QImage::Format_ARGB32);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        renderer.render(&painter);
        painter.end();
        const QString folder =
            QString::fromLocal8Bit(argv[2]) + u"/%1x%1/apps"_s.arg(QString::number(size));
        const QString path = folder + u'/' + icon.completeBaseName() + u".png"_s;
        if (!renderer.isValid() || !QDir().mkpath(folder) || !picture.save(path))
            return 1;
    }
    return 0;
}
