#pragma once

#include "classShared/sourceDico.h"

#include <QDateTime>
#include <QImage>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>

namespace vignar
{

class PreviewPictures;

/// How a sheet will look with the preferences as they are: laid out and drawn by the code
/// that makes the sheets, reduced to the room that there is. Shows a sample video until it
/// is given a row.
class SheetPreview : public QWidget
{
    Q_OBJECT

public:
    explicit SheetPreview(QWidget *parent = nullptr);
    ~SheetPreview() override;

    /// Shows the sheet of a source, in a layout or else in the one of the preferences: of
    /// its finished thumbnails, in index order, or else with its poster (Keys::imgPathStr)
    /// in every cell.
    void setRow(const SourceDico &source, std::optional<int> layout = {},
                const QStringList &pictures = {});
    /// Shows a sheet that was made, a picture file, in place of how it will look; empty, or
    /// a file that is no picture: no more.
    void setSheet(const QString &path);
    /// Shows the sample again.
    void clearRow();

    /// To be called after any change of the preferences. Draws once before the next event
    /// that waits, however often it is called, and only while it is visible.
    void refresh();

    /// "Thumbnails: 24 · 1280 × 1508 pixels", or why there is no sheet.
    QString description();
    /// The sheet as it shows, in pixels of the screen; null where there is none.
    QImage picture();

    QSize sizeHint() const override { return {300, 400}; }
    QSize minimumSizeHint() const override { return {140, 140}; }

Q_SIGNALS:
    /// There is another picture and description.
    void drawn();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    struct Row {
        SourceDico source;
        std::optional<int> layout;
        QStringList pictures;
        QImage poster;
    };

    /// The file as it was when it was read.
    struct Sheet {
        QString path;
        QDateTime modified;
        QImage picture;
        QSize size;
    };

    void takeSheet(const Sheet &sheet);
    void draw();
    void drawMadeSheet();
    void tell();
    void drawIfVisible();
    int layoutIndex() const;
    QString faultOf(Dico display) const;
    void plan();
    void drawSheet(const Dico &display);
    void describe(const QSize &page);

    std::optional<Row> m_row;
    Sheet m_sheet;
    /// What m_planned and m_pictures were made of.
    SourceDico m_planningInput;
    Dico m_planned;
    std::unique_ptr<PreviewPictures> m_pictures;
    QImage m_picture;
    QString m_description;
    QTimer m_timer;
    bool m_isStale = true;
};

} // namespace vignar
