#include "app/batchEntry.h"

#include "classShared/durations.h"
#include "classShared/format.h"
#include "settings/stringTables.h"

#include <QFileInfo>

namespace vignar
{

using namespace Qt::StringLiterals;

QString rowCaption(const SourceDico &dico)
{
    const bool isProgressive = read(dico, Keys::v_fields, 0) == localised(u"PFF"_s, fieldsTable);
    const double rate = read(dico, Keys::v_fps, 0).value_or(0);
    const QString rateText = rate == unknownFrameRate ? QString() : filled(u"%ld", int(rate + 0.5));
    return filled(u"%@\n(%ldx)%ld%@%@\n%@", QFileInfo(readStr(dico, Keys::srcPathStr)).fileName(),
                  read(dico, Keys::v_width, 0).value_or(0),
                  read(dico, Keys::v_height, 0).value_or(0), isProgressive ? u"p"_s : u"i"_s,
                  rateText,
                  duree2HmsStr(static_cast<int>(read(dico, Keys::w_duration).value_or(0))));
}

BatchEntry makeBatchEntry(const SourceDico &dico, int order, int layout, int format)
{
    BatchEntry row;
    write(row, RowKeys::order, order);
    write(row, RowKeys::resultat, Puces::puce);
    write(row, Keys::out, layout);
    write(row, Keys::dpi, format);
    write(row, RowKeys::dico, dico);
    write(row, RowKeys::src, rowCaption(dico));
    const QImage poster(readStr(dico, Keys::imgPathStr));
    if (!poster.isNull())
        write(row, RowKeys::img, poster);
    return row;
}

} // namespace vignar
