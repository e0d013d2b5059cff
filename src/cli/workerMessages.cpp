#include "cli/workerMessages.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <type_traits>

namespace vignar
{

namespace
{

/// Puts fields into a message.
struct FieldWriter {
    Dico &message;

    template <class T>
    void operator()(const char *key, const T &field)
    {
        if constexpr (std::is_enum_v<T>)
            write(message, Key<int>(key), static_cast<int>(field));
        else
            write(message, Key<T>(key), field);
    }
    // A null text differs from an empty one, which JSON would not keep.
    void operator()(const char *key, const QString &field)
    {
        if (!field.isNull())
            write(message, Key<QString>(key), field);
    }
};

/// Takes fields out of a message; what it lacks stays as it was.
struct FieldReader {
    const Dico &message;

    template <class T>
    void operator()(const char *key, T &field)
    {
        using Stored = std::conditional_t<std::is_enum_v<T>, int, T>;
        if (const auto stored = read(message, Key<Stored>(key)))
            field = static_cast<T>(*stored);
    }
};

template <class Outcome, class Visitor>
void visitOutcome(Outcome &outcome, Visitor visit)
{
    visit("source", outcome.source);
    visit("status", outcome.status);
    visit("reason", outcome.reason);
    visit("sheet", outcome.sheet);
    visit("diskPicture", outcome.diskPicture);
    visit("sprite", outcome.sprite);
    visit("vtt", outcome.vtt);
    visit("notes", outcome.notes);
    visit("isIncomplete", outcome.isIncomplete);
    visit("layout", outcome.layout);
    visit("format", outcome.format);
    visit("thumbnails", outcome.thumbnails);
    visit("missing", outcome.missing);
    visit("interval", outcome.interval);
    visit("intervalAsked", outcome.intervalAsked);
    visit("statedDuration", outcome.statedDuration);
    visit("measuredDuration", outcome.measuredDuration);
    visit("seconds", outcome.seconds);
}

template <class Request, class Visitor>
void visitAlert(Request &request, Visitor visit)
{
    visit("title", request.title);
    visit("text", request.text);
    visit("defaultButton", request.defaultButton);
    visit("alternateButton", request.alternateButton);
    visit("otherButton", request.otherButton);
    visit("style", request.style);
    visit("seconds", request.seconds);
    visit("isSuppressible", request.isSuppressible);
}

template <class Naming, class Visitor>
void visitNaming(Naming &naming, Visitor visit)
{
    visit("suffix", naming.suffix);
    visit("sheetName", naming.sheetName);
    visit("isPreviewMade", naming.isPreviewMade);
    visit("firstNumber", naming.firstNumber);
}

} // namespace

Dico workerMessage(QLatin1String word)
{
    Dico message;
    write(message, WorkerKeys::word, word);
    return message;
}

Dico outcomeMessage(const SheetOutcome &outcome)
{
    Dico message = workerMessage(WorkerWords::outcome);
    visitOutcome(outcome, FieldWriter{message});
    return message;
}

SheetOutcome outcomeOf(const Dico &message)
{
    SheetOutcome outcome;
    visitOutcome(outcome, FieldReader{message});
    return outcome;
}

Dico alertMessage(const AlertRequest &request)
{
    Dico message = workerMessage(WorkerWords::alert);
    visitAlert(request, FieldWriter{message});
    return message;
}

AlertRequest alertOf(const Dico &message)
{
    AlertRequest request;
    visitAlert(request, FieldReader{message});
    return request;
}

Dico analysedMessage(const SheetNaming &naming)
{
    Dico message = workerMessage(WorkerWords::analysed);
    visitNaming(naming, FieldWriter{message});
    return message;
}

SheetNaming namingOf(const Dico &message)
{
    SheetNaming naming;
    visitNaming(naming, FieldReader{message});
    return naming;
}

QByteArray messageLine(const Dico &message)
{
    return QJsonDocument(QJsonObject::fromVariantMap(message)).toJson(QJsonDocument::Compact);
}

Dico messageOf(const QByteArray &line)
{
    return QJsonDocument::fromJson(line).object().toVariantMap();
}

} // namespace vignar
