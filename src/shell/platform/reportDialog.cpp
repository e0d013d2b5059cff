#include "shell/platform/reportDialog.h"

#include "classShared/lineLog.h"
#include "settings/logFiles.h"
#include "settings/stringTables.h"
#include "shell/platform/problemReport.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace vignar
{

using namespace Qt::StringLiterals;

namespace
{

/// Far more than the lines that are shown.
constexpr qint64 readLimit = 256 * 1024;

QString endOfDetailedLog()
{
    QFile file(detailedLogPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    file.seek(std::max<qint64>(0, file.size() - readLimit));
    return QString::fromUtf8(file.read(readLimit));
}

} // namespace

ReportDialog::ReportDialog(const QStringList &versions, QWidget *parent)
    : QDialog(parent),
      m_words(new QLabel(localised(u"V_report_words"_s))),
      m_letter(new QPlainTextEdit)
{
    setWindowTitle(localised(u"V_menu_report"_s).remove(u'&').remove(u'…'));
    m_words->setTextFormat(Qt::PlainText);
    m_words->setWordWrap(true);
    m_words->setBuddy(m_letter);
    m_letter->setPlainText(problemReport(localised(u"D_bugreport_mail"_s), versions.join(u'\n'),
                                         endOfDetailedLog(), QDir::homePath()));
    m_letter->setAccessibleName(windowTitle());
    m_letter->setTabChangesFocus(true);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    auto *sendButton =
        buttons->addButton(localised(u"V_report_mail"_s), QDialogButtonBox::AcceptRole);
    auto *copyButton =
        buttons->addButton(localised(u"V_report_copy"_s), QDialogButtonBox::ActionRole);
    connect(sendButton, &QPushButton::clicked, this, &ReportDialog::send);
    connect(copyButton, &QPushButton::clicked, this, &ReportDialog::copy);
    connect(buttons, &QDialogButtonBox::rejected, this, &ReportDialog::reject);

    auto *column = new QVBoxLayout(this);
    column->addWidget(m_words);
    column->addWidget(m_letter);
    column->addWidget(buttons);
    resize(680, 520);
}

void ReportDialog::send()
{
    const QString subject =
        QGuiApplication::applicationDisplayName() + u' ' + QCoreApplication::applicationVersion();
    const QUrl url =
        mailUrl(QStringLiteral(VIGNAR_REPORT_ADDRESS), subject, m_letter->toPlainText());
    if (QDesktopServices::openUrl(url)) {
        accept();
        return;
    }
    // What the user has written stays on the screen, and can be pasted elsewhere.
    logLine(u"reportDialog        :-( no mail program");
    copy();
    m_words->setText(localised(u"V_report_noMail"_s));
}

void ReportDialog::copy()
{
    QGuiApplication::clipboard()->setText(m_letter->toPlainText());
}

} // namespace vignar
