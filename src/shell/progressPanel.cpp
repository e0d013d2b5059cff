#include "shell/progressPanel.h"

#include "classShared/format.h"
#include "settings/stringTables.h"
#include "shell/colours.h"
#include "shell/elidedLabel.h"
#include "shell/icons.h"
#include "shell/roomyButton.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Fine enough for any bar that fits on a screen.
constexpr int barSteps = 1000;

QHBoxLayout *twoEnds(QWidget *leading, QWidget *trailing)
{
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(leading, 1);
    row->addWidget(trailing);
    return row;
}

} // namespace

ProgressPanel::ProgressPanel(QWidget *parent)
    : QWidget(parent),
      m_file(new ElidedLabel),
      m_percent(new QLabel),
      m_bars(new QWidget),
      m_bar(new QProgressBar),
      m_total(new QProgressBar),
      m_steps(new QLabel),
      m_remaining(new QLabel),
      m_go(new RoomyButton(themedIcon(u"media-playback-start"_s), localised(u"V_go"_s))),
      m_pause(new RoomyButton),
      m_stop(new RoomyButton(themedIcon(u"media-playback-stop"_s), localised(u"V_stop"_s)))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    addBars();
    addButtons();
    m_clock.start();
    setRunning(false);
}

void ProgressPanel::addBars()
{
    m_bar->setTextVisible(false);
    m_bar->setAccessibleName(localised(u"V_progress_sheet"_s));
    m_total->setTextVisible(false);
    m_total->setMaximumHeight(6);
    m_total->setRange(0, barSteps);
    m_total->setAccessibleName(localised(u"V_progress_batch"_s));
    for (QLabel *label : {m_percent, m_steps, m_remaining})
        label->setTextFormat(Qt::PlainText);
    auto *rows = new QVBoxLayout(m_bars);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(8);
    rows->addWidget(m_bar);
    rows->addLayout(twoEnds(m_steps, m_remaining));
    rows->addWidget(m_total);
    auto *column = static_cast<QVBoxLayout *>(layout());
    column->addLayout(twoEnds(m_file, m_percent));
    column->addWidget(m_bars);
}

void ProgressPanel::addButtons()
{
    m_go->setDefault(true);
    m_go->setMinimumHeight(36);
    m_pause->setMinimumHeight(36);
    m_stop->setMinimumHeight(36);
    m_pause->setCheckable(true);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_go, 2);
    row->addWidget(m_pause, 1);
    row->addWidget(m_stop, 1);
    static_cast<QVBoxLayout *>(layout())->addLayout(row);
    connect(m_go, &QPushButton::clicked, this, &ProgressPanel::goPressed);
    connect(m_pause, &QPushButton::clicked, this, &ProgressPanel::pausePressed);
    connect(m_stop, &QPushButton::clicked, this, &ProgressPanel::stopPressed);
}

std::chrono::milliseconds ProgressPanel::now() const
{
    return std::chrono::milliseconds(m_clock.elapsed());
}

void ProgressPanel::setGoEnabled(bool isEnabled)
{
    m_go->setEnabled(isEnabled);
}

void ProgressPanel::setRunning(bool isRunning)
{
    m_isRunning = isRunning;
    m_pause->setEnabled(isRunning);
    m_stop->setEnabled(isRunning);
    if (isRunning) {
        m_remainingTime.start(now());
    } else {
        m_fileName.clear();
        m_stepsMaximum = m_stepsValue = 0;
        setSteps({});
    }
    setPaused(false);
    showProgress();
}

void ProgressPanel::setPaused(bool isPaused)
{
    m_isPaused = isPaused;
    updateClock();
    m_pause->setChecked(isPaused);
    m_pause->setText(localised(isPaused ? u"V_resume"_s : u"V_pause"_s));
    m_pause->setIcon(themedIcon(isPaused ? u"media-playback-start"_s : u"media-playback-pause"_s));
    showProgress();
}

void ProgressPanel::setHeldUp(const QString &text)
{
    m_heldUpText = text;
    updateClock();
    showProgress();
}

void ProgressPanel::updateClock()
{
    if (m_isPaused || !m_heldUpText.isEmpty())
        m_remainingTime.pause(now());
    else
        m_remainingTime.resume(now());
}

void ProgressPanel::setIdleText(const QString &text)
{
    m_idleText = text;
    showProgress();
}

void ProgressPanel::setFileName(const QString &name)
{
    m_fileName = name;
    showProgress();
}

void ProgressPanel::setSteps(const QString &text)
{
    m_steps->setText(text);
}

void ProgressPanel::setStepsMaximum(double maximum)
{
    m_stepsMaximum = maximum;
    m_stepsValue = 0;
    showProgress();
}

void ProgressPanel::setStepsValue(double value)
{
    m_stepsValue = value;
    showProgress();
}

void ProgressPanel::setRows(int finished, int all)
{
    // What was done of a sheet counts until that sheet is one of the finished.
    if (std::exchange(m_finished, finished) != finished)
        m_stepsMaximum = m_stepsValue = 0;
    m_rows = all;
    showProgress();
}

double ProgressPanel::doneOfSheet() const
{
    return m_stepsMaximum > 0 ? std::clamp(m_stepsValue / m_stepsMaximum, 0.0, 1.0) : 0;
}

double ProgressPanel::doneOfRun() const
{
    return m_rows > 0 ? (m_finished + doneOfSheet()) / m_rows : 0;
}

QString ProgressPanel::placeText() const
{
    return filled(localised(u"V_progress_place"_s), std::min(m_finished + 1, m_rows), m_rows);
}

QString ProgressPanel::remainingText() const
{
    if (m_isPaused)
        return localised(u"V_progress_paused"_s);
    if (!m_heldUpText.isEmpty())
        return m_heldUpText;
    const auto left = m_remainingTime.estimate(now(), doneOfRun());
    if (!left)
        return {};
    const auto minutes = std::chrono::round<std::chrono::minutes>(*left).count();
    if (minutes < 1)
        return localised(u"V_remaining_moment"_s);
    if (minutes < 60)
        return filled(localised(u"V_remaining_minutes"_s), minutes);
    return filled(localised(u"V_remaining_hours"_s), minutes / 60, minutes % 60);
}

void ProgressPanel::showProgress()
{
    Q_EMIT changed();
    m_bars->setVisible(m_isRunning);
    m_total->setVisible(m_rows > 1);
    m_file->setText(m_isRunning ? m_fileName : m_idleText);
    m_file->setToolTip(m_isRunning ? m_fileName : QString());
    const bool isKnown = m_stepsMaximum > 0;
    m_percent->setText(m_isRunning && isKnown ? filled(u"%ld %%", int(100 * doneOfSheet()))
                                              : QString());
    m_bar->setRange(0, isKnown || m_isPaused ? barSteps : 0);
    m_bar->setValue(int(barSteps * doneOfSheet()));
    m_total->setValue(int(barSteps * doneOfRun()));
    if (!m_isRunning) {
        m_remaining->clear();
        return;
    }
    QStringList words;
    if (m_rows > 1)
        words << placeText();
    if (const QString left = remainingText(); !left.isEmpty())
        words << left;
    m_remaining->setText(words.join(u" · "_s));
}

} // namespace vignar
