#include "settings/propertyList.h"

#include <QDateTime>
#include <QXmlStreamReader>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

class PropertyListReader
{
public:
    explicit PropertyListReader(const QByteArray &xml) : m_xml(xml) {}

    std::optional<Dico> root()
    {
        if (!m_xml.readNextStartElement() || m_xml.name() != "plist"_L1 ||
            !m_xml.readNextStartElement() || m_xml.name() != "dict"_L1)
            return std::nullopt;
        const Dico dico = dictionary();
        if (m_xml.hasError())
            return std::nullopt;
        return dico;
    }

private:
    static constexpr int maximumDepth = 512;

    QVariant value()
    {
        const QString kind = m_xml.name().toString();
        if (kind == "dict"_L1)
            return nested(&PropertyListReader::dictionary);
        if (kind == "array"_L1)
            return nested(&PropertyListReader::list);
        const QString text = m_xml.readElementText();
        if (kind == "string"_L1)
            return text;
        if (kind == "true"_L1 || kind == "false"_L1)
            return kind == "true"_L1;
        if (kind == "date"_L1)
            return QDateTime::fromString(text, Qt::ISODate);
        if (kind == "data"_L1)
            return QByteArray::fromBase64(text.toLatin1());
        return number(kind, text.trimmed());
    }

    QVariant number(const QString &kind, const QString &text)
    {
        bool isNumber = false;
        QVariant value;
        if (kind == "integer"_L1)
            value = text.toLongLong(&isNumber);
        else if (kind == "real"_L1)
            value = text.toDouble(&isNumber);
        if (!isNumber)
            m_xml.raiseError(u"no property list value"_s);
        return value;
    }

    /// A hostile file must exhaust this limit, not the stack.
    template <class Container>
    QVariant nested(Container (PropertyListReader::*read)())
    {
        if (++m_depth > maximumDepth)
            m_xml.raiseError(u"nested too deeply"_s);
        const Container container = (this->*read)();
        --m_depth;
        return container;
    }

    Dico dictionary()
    {
        Dico dico;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() != "key"_L1)
                m_xml.raiseError(u"a key is missing"_s);
            const QString key = m_xml.readElementText();
            if (m_xml.readNextStartElement())
                dico.insert(key, value());
            else
                m_xml.raiseError(u"a value is missing"_s);
        }
        return dico;
    }

    QVariantList list()
    {
        QVariantList values;
        while (m_xml.readNextStartElement())
            values.append(value());
        return values;
    }

    QXmlStreamReader m_xml;
    int m_depth = 0;
};

} // namespace

std::optional<Dico> parsePropertyList(const QByteArray &xml)
{
    return PropertyListReader(xml).root();
}

} // namespace vignar
