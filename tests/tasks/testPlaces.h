#pragma once

#include "settings/applicationPlaces.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// The application's places in a folder of the test's own, while this lives.
struct TestPlaces {
    struct Places : vignar::ApplicationPlaces {
        QString root;
        QString resourceFolder() const override { return root + QStringLiteral("/resources"); }
        QString supportFolder() const override { return root + QStringLiteral("/support"); }
        QString preferenceFolder() const override { return root; }
        QString logFolder() const override { return root; }
        QString temporaryFolder() const override { return root; }
    };
    QTemporaryDir folder;

    TestPlaces()
    {
        auto places = std::make_unique<Places>();
        places->root = folder.path();
        vignar::setApplicationPlaces(std::move(places));
    }
    ~TestPlaces() { vignar::setApplicationPlaces(nullptr); }

    /// Path of a file of that name, made with its folders.
    QString file(const QString &name, const QByteArray &content = "x") const
    {
        const QString path = folder.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(content) > 0 ? path : QString();
    }
};
