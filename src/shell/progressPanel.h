#pragma once

#include "shell/remainingTime.h"

#include <QElapsedTimer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace vignar
{

class ElidedLabel;

/// How far the batch has come, and the buttons that start, pause and stop it.
class ProgressPanel : public QWidget
{
    Q_OBJECT

public:
    explicit ProgressPanel(QWidget *parent = nullptr);

    void setGoEnabled(bool isEnabled);
    /// While a batch runs: shows its progress, and the buttons that steer it.
    void setRunning(bool isRunning);
    bool isRunning() const { return m_isRunning; }
    void setPaused(bool isPaused);
    bool isPaused() const { return m_isPaused; }
    /// The run is held up for a moment by something else, named by the text; null: goes on.
    void setHeldUp(const QString &text);

    /// Words while nothing runs.
    void setIdleText(const QString &text);
    void setFileName(const QString &name);
    void setSteps(const QString &text);
    /// Steps of the current sheet; 0: not known yet.
    void setStepsMaximum(double maximum);
    void setStepsValue(double value);
    /// Sheets that are finished, of all that the run makes.
    void setRows(int finished, int all);
    /// 0 to 1, over all rows.
    double doneOfRun() const;

Q_SIGNALS:
    void goPressed();
    void pausePressed(bool isToPause);
    void stopPressed();
    /// Something that the panel shows may have changed.
    void changed();

private:
    void addBars();
    void addButtons();
    void updateClock();
    void showProgress();
    double doneOfSheet() const;
    QString placeText() const;
    QString remainingText() const;
    std::chrono::milliseconds now() const;

    ElidedLabel *m_file;
    QLabel *m_percent;
    QWidget *m_bars;
    QProgressBar *m_bar;
    QProgressBar *m_total;
    QLabel *m_steps;
    QLabel *m_remaining;
    QPushButton *m_go;
    QPushButton *m_pause;
    QPushButton *m_stop;

    QElapsedTimer m_clock;
    RemainingTime m_remainingTime;
    QString m_idleText;
    QString m_fileName;
    QString m_heldUpText;
    double m_stepsMaximum = 0;
    double m_stepsValue = 0;
    int m_finished = 0;
    int m_rows = 0;
    bool m_isRunning = false;
    bool m_isPaused = false;
};

} // namespace vignar
