#pragma once

#include "app/outlets.h"

#include <QList>
#include <QPair>
#include <QStringList>

namespace vignar
{

/// A screen for tests: it chooses what the test sets, and remembers what it was told.
class RecordingOutlets : public Outlets
{
public:
    int layout = mixLayout;
    int format = 1;
    QString destination;

    QList<SheetOutcome> outcomes;
    QList<QPair<QString, QString>> refused;
    QStringList notices;
    QStringList percents;
    QStringList steps;
    QList<double> mainValues;
    QString dropImage;
    QString revealed;
    bool isGoEnabled = false;
    bool isDrawerOpen = false;
    int analysisEnds = 0;
    int batchEnds = 0;

    int chosenLayout() const override { return layout; }
    int chosenFormat() const override { return format; }
    QString destinationField() const override { return destination; }
    void setDestinationField(const QString &path) override { destination = path; }
    void setProgressValue(ProgressBar bar, double value) override
    {
        if (bar == ProgressBar::main)
            mainValues.append(value);
    }
    void setPercentText(RunnerKind, const QString &text) override
    {
        if (!text.isEmpty())
            percents.append(text);
    }
    void setStepsText(const QString &text) override
    {
        if (!text.isEmpty())
            steps.append(text);
    }
    void setDropArea(const QString &imageName, const QString &) override { dropImage = imageName; }
    void setGoEnabled(bool isEnabled) override { isGoEnabled = isEnabled; }
    void setDrawerOpen(bool isOpen) override { isDrawerOpen = isOpen; }
    void showSheetNotice(const QString &title, const QString &) override { notices.append(title); }
    void sourceRefused(const QString &path, const QString &reason) override
    {
        refused.append({path, reason});
    }
    void analysisEnded() override { ++analysisEnds; }
    void sheetFinished(const SheetOutcome &outcome) override { outcomes.append(outcome); }
    void batchEnded() override { ++batchEnds; }
    void reveal(const QString &folder) override { revealed = folder; }
};

} // namespace vignar
