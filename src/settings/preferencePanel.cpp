#include "settings/preferencePanel.h"

#include "classShared/byteSearch.h"
#include "classShared/colours.h"
#include "classShared/lineLog.h"
#include "classShared/paths.h"
#include "settings/applicationPlaces.h"
#include "settings/preferences.h"

#include <QDir>
#include <QFileInfo>

#include <array>

namespace vignar
{
using namespace Qt::StringLiterals;

namespace
{

using Action = PreferencePanel::Action;

constexpr std::array segmentKeys{Prefs::prefColor, Prefs::prefCheckMatrix, Prefs::prefDpi};
constexpr std::array limitKeys{Prefs::prefLimitBig, Prefs::prefLimitMed, Prefs::prefLimitMin,
                               Prefs::prefLimitMix};
constexpr std::array colourKeys{Prefs::pageBkgColor, Prefs::prefBorderColor};
/// In the order in which they are filled.
constexpr std::array sheetKeys{Prefs::prefTimecode,     Prefs::pageName,
                               Prefs::pageLocation,     Prefs::pageDate,
                               Prefs::pageDuration,     Prefs::pageVIdentity,
                               Prefs::pagePoids,        Prefs::pageEssence,
                               Prefs::pageComment,      Prefs::prefWebVtt,
                               Prefs::prefTrueTimecode, Prefs::prefAvoidBlank,
                               Prefs::prefMultimediaHd, Prefs::prefDerushNoMultimediaHd};
constexpr std::array textKeys{Prefs::prefSuffix, Prefs::prefNameTemplate, Prefs::pageCommentText,
                              Prefs::prefSheetFormat};

/// A segment that a control without selection answers.
constexpr int noSegment = int(dataNotFound);
/// The state of a check box; a mixed one is neither on nor off.
constexpr int stateOn = 1;

/// Stored values first, factory settings where they are absent or of another kind.
class PanelFiller
{
public:
    PanelFiller(PreferencePanel &panel, const Dico &stored)
        : m_panel(panel), m_stored(stored), m_defaults(prefDefaults())
    {
    }

    void fill()
    {
        fillDestination();
        fillColourSegment();
        m_panel.setControl(Prefs::prefAlertEnd, isOn(read(m_stored, Prefs::prefAlertEnd)));
        fillCheckBox(Prefs::update);
        m_panel.perform(Action::showUpdateControls);
        fillLayout();
        fillWidth();
        for (const auto &key : limitKeys)
            m_panel.setControl(key, describe(value(key)));
        fillCheckBox(Prefs::prefLimitAuto);
        m_panel.perform(Action::thLimitAuto);
        fillDerush();
        for (const auto &key : colourKeys)
            fillColour(key);
        fillSheet();
    }

private:
    template <class T>
    T value(const Key<T> &key) const
    {
        const Dico stored{{key, valueInRange(key, m_stored.value(key))}};
        if (const auto value = read(stored, key))
            return *value;
        return read(m_defaults, key).value_or(T{});
    }

    static int isOn(const std::optional<int> &value) { return value.value_or(0) != 0 ? 1 : 0; }

    void fillCheckBox(const Key<int> &key) { m_panel.setControl(key, isOn(value(key))); }

    /// The product's own folder is made when it is needed: its parent is enough.
    static bool isUsableDestination(const QString &stored)
    {
        const QString path = expandTilde(stored);
        const bool isOurs = path.endsWith(bundleName) || path.endsWith(bundleName + u'/');
        const QFileInfo folder(QDir::cleanPath(path));
        return !path.isEmpty() && (isOurs ? folder.dir().exists() : folder.isDir());
    }

    void fillDestination()
    {
        QString path = value(Prefs::prefDefautDstPathStr);
        if (!isUsableDestination(path))
            path = readStr(m_defaults, Prefs::prefDefautDstPathStr);
        m_panel.setControl(Prefs::prefDefautDstPathStr, path);
        m_panel.perform(Action::prepareDestination);
    }

    bool isSegment(const Key<int> &key, int index) const
    {
        return index >= 0 && index != noSegment && index < m_panel.segmentCount(key);
    }

    void fillColourSegment()
    {
        const int index = value(Prefs::prefColor);
        m_panel.setControl(Prefs::prefColor, isSegment(Prefs::prefColor, index) ? index : 1);
        m_panel.perform(Action::setColor);
    }

    void fillLayout()
    {
        int index = value(Prefs::prefCheckMatrix);
        if (!isSegment(Prefs::prefCheckMatrix, index))
            index = read(m_defaults, Prefs::prefCheckMatrix).value_or(0);
        m_panel.setControl(Prefs::prefCheckMatrix, index);
    }

    void fillWidth()
    {
        m_panel.setControl(Prefs::prefDpi, value(Prefs::prefDpi));
        m_panel.perform(Action::prefDpi);
        fillCheckBox(Prefs::prefComputerWidthAuto);
        m_panel.perform(Action::prefComputerWidthAuto);
        m_panel.setControl(Prefs::prefComputerWidth, value(Prefs::prefComputerWidth));
        m_panel.perform(Action::prefComputerWidth);
    }

    void fillDerush()
    {
        m_panel.setControl(Prefs::prefDerushInterval, value(Prefs::prefDerushInterval));
        fillCheckBox(Prefs::prefDerush);
        m_panel.perform(Action::thLimitAuto);
    }

    void fillColour(const Key<QString> &key)
    {
        auto colour = colorHexaRgb(value(key));
        if (!colour)
            colour = colorHexaRgb(readStr(m_defaults, key));
        const QString text = colorToHexaRgb(colour.value_or(QColor()));
        logDebug(u"set Color %@ : %@", QString(key), text);
        m_panel.setControl(key, text);
    }

    void fillSheet()
    {
        const double borderSize = value(Prefs::prefBorderSize);
        m_panel.setControl(Prefs::prefBorderSize, borderSize);
        logLine(u"prefBorderSize      : %.0f", borderSize);
        for (const auto &key : sheetKeys)
            fillCheckBox(key);
        m_panel.perform(Action::multimediaHDBt);
        for (const auto &key : textKeys)
            m_panel.setControl(key, value(key));
    }

    PreferencePanel &m_panel;
    const Dico &m_stored;
    const Dico m_defaults;
};

int derushInterval(const PreferencePanel &panel)
{
    const int interval = panel.control(Prefs::prefDerushInterval).toInt();
    return interval > 0 ? interval : read(prefDefaults(), Prefs::prefDerushInterval).value_or(0);
}

void readCheckBoxes(const PreferencePanel &panel, Dico &values)
{
    const auto isNotOff = [&panel](const Key<int> &key) { return panel.control(key).toInt() != 0; };
    const auto isPlainOn = [&panel](const Key<int> &key) {
        return panel.control(key).toInt() == stateOn;
    };
    for (const auto &key : {Prefs::prefAlertEnd, Prefs::update, Prefs::prefComputerWidthAuto})
        write(values, key, int(isNotOff(key)));
    for (const auto &key : sheetKeys)
        write(values, key, int(isNotOff(key)));
    for (const auto &key : {Prefs::prefLimitAuto, Prefs::prefDerush})
        write(values, key, int(isPlainOn(key)));
}

Dico panelValues(const PreferencePanel &panel)
{
    Dico values;
    write(values, Prefs::prefDefautDstPathStr,
          panel.control(Prefs::prefDefautDstPathStr).toString());
    for (const auto &key : textKeys)
        write(values, key, panel.control(key).toString());
    for (const auto &key : segmentKeys)
        write(values, key, panel.control(key).toInt());
    for (const auto &key : limitKeys)
        write(values, key, panel.control(key).toInt());
    for (const QString &key : {QString(Prefs::prefComputerWidth), QString(Prefs::prefBorderSize)})
        values.insert(key, panel.control(key).toDouble());
    write(values, Prefs::prefDerushInterval, derushInterval(panel));
    readCheckBoxes(panel, values);
    for (const auto &key : colourKeys) {
        write(values, key, panel.control(key).toString());
        logLine(u"get Color %@ : %@", QString(key), readStr(values, key));
    }
    return values;
}

} // namespace

std::optional<Dico> prefs2GuiApp(PreferencePanel &panel, const std::optional<Dico> &stored)
{
    if (!stored)
        return panelValues(panel);
    PanelFiller(panel, *stored).fill();
    return std::nullopt;
}

} // namespace vignar
