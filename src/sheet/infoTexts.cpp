#include "sheet/infoTexts.h"

#include "classShared/dates.h"
#include "classShared/durations.h"
#include "classShared/format.h"
#include "classShared/paths.h"
#include "classShared/sizes.h"
#include "settings/stringTables.h"
#include "sheet/plannedSource.h"

#include <QFileInfo>
#include <QStringList>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

QString label(const char16_t *key)
{
    return localisedCapitalised(QString::fromUtf16(key));
}

QString nameText(const QFileInfo &file)
{
    // A dot at the very start hides a file and begins no extension.
    const QString name = file.completeBaseName();
    return name.isEmpty() ? file.fileName() : name;
}

QString dateText(const QString &path)
{
    return dateCreationStr(path, {}, true).section(u' ', 0, 0);
}

QString identityText(const SourceDico &source)
{
    const QSize size = storedSize(source);
    QString text = filled(u"%@ %ld pixels * %@ %ld px", label(u"width"), size.width(),
                          label(u"height"), size.height());
    if (const auto fields = read(source, Keys::v_fields, 0))
        text += filled(u" - %@ '%@'", label(u"interlacing"), *fields);
    const auto rate = read(source, Keys::v_fps, 0);
    if (rate && *rate != unknownFrameRate)
        text += filled(u" - %@ %.2f", label(u"framerate"), *rate);
    if (const auto aspect = read(source, Keys::v_dar, 0))
        text += filled(u" - %@ %@", label(u"display"), *aspect);
    return text;
}

QString weightText(const QString &path)
{
    const float megabytes = poidsFile(path, u"M"_s);
    if (megabytes < 0)
        return {};
    const QString unit = localised(u"D_byte"_s);
    return megabytes < 1024 ? filled(u"%.0f M%@", megabytes, unit)
                            : filled(u"%.2f G%@", megabytes * (1.0 / 1024), unit);
}

QString videoCodecText(const QString &codec)
{
    static const QStringList intermediate{u"aic"_s, u"icod"_s};
    static const QStringList proRes{u"ap4h"_s, u"apco"_s, u"apcs"_s,
                                    u"apch"_s, u"apcn"_s, u"prores"_s};
    if (intermediate.contains(codec, Qt::CaseInsensitive))
        return u"AppleIntermediateCodec"_s;
    return proRes.contains(codec, Qt::CaseInsensitive) ? filled(u"ProRes (%@)", codec) : codec;
}

QStringList contentTexts(const SourceDico &source)
{
    QStringList texts;
    if (const auto video = read(source, Keys::v_codec, 0))
        texts += filled(u"%@ %@", label(u"video"), videoCodecText(*video));
    if (const auto audio = read(source, Keys::a_codec, 0))
        texts += filled(u"%@ %@", label(u"audio"), *audio);
    return texts;
}

QString essenceText(const SourceDico &source, const QFileInfo &file)
{
    QStringList container{label(u"wrapper")};
    if (const auto wrapper = read(source, Keys::wrapper))
        container += *wrapper;
    if (!file.suffix().isEmpty())
        container += filled(u"(.%@)", file.suffix());
    QString text = container.join(u' ');
    if (const QStringList contents = contentTexts(source); !contents.isEmpty())
        text += filled(u" - %@: ", label(u"contents")) + contents.join(u", "_s);
    return text;
}

} // namespace

Dico infoTexts(const SourceDico &source)
{
    const QString path = readStr(source, Keys::srcPathStr);
    const QFileInfo file(path);
    Dico texts;
    const auto add = [&texts](const Key<QString> &key, const QString &text) {
        if (!text.isEmpty())
            write(texts, key, text);
    };
    add(Keys::name, nameText(file));
    add(Keys::location, fichier_dirname(path));
    add(Keys::date, dateText(path));
    add(Keys::duration, duree2HmsStr(plannedSeconds(source)));
    add(Keys::vIdentity, identityText(source));
    add(Keys::poids, weightText(path));
    add(Keys::essence, essenceText(source, file));
    add(Keys::comment, readStr(source, Keys::w_comment).simplified());
    return texts;
}

} // namespace vignar
