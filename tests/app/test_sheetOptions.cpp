#include "app/sheetDisplay.h"
#include "settings/preferenceStore.h"
#include "settings/preferences.h"

#include <QTest>

using namespace vignar;
using namespace Qt::StringLiterals;

/// The preferences that change nothing unless they are set.
class TestSheetOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setSharedPreferenceStore(std::make_unique<MemoryPreferenceStore>()); }

    void commentIsTypedOrTheSources()
    {
        const Dico planned{{Keys::comment, u"own"_s}};
        const auto shown = [&planned] { return readStr(sheetDisplay(planned, 0), Keys::comment); };
        prefWrite(Prefs::pageCommentText, u""_s);
        QVERIFY(shown().isNull());
        prefWrite(Prefs::pageComment, 1);
        QCOMPARE(shown(), u"own"_s);
        prefWrite(Prefs::pageCommentText, u" two\nlines "_s);
        QCOMPARE(shown(), u"two lines"_s);
    }
};

QTEST_GUILESS_MAIN(TestSheetOptions)
#include "test_sheetOptions.moc"
