#pragma once

#include "classShared/keys.h"
#include "classShared/result.h"

#include <span>

namespace vignar
{

/// Bytes in UTF-8 of the longest suffix of a sheet's name, its hyphen aside.
inline constexpr int longestSuffix = 100;

/// What a preference may be. The command line, the stored file and the preferences window
/// all go by the one table of these.
struct PreferenceRange {
    enum class Kind {
        /// 0 or 1. Any stored number but 0 counts as 1.
        onOff,
        whole,
        decimal,
        /// Six hexadecimal digits.
        colour,
        /// One of a few words.
        word,
        text,
        /// A text that file names are made of. One that is too long is cut, others are refused.
        namePart
    };
    /// What a stored number outside the range counts as.
    enum class Outside { nearest, standard, standardBelow };
    enum class Readers {
        all,
        /// No sheet depends on it: --set does not offer it.
        window
    };

    QLatin1String key;
    Kind kind = Kind::onOff;
    double lowest = 0;
    /// Of a text its bytes in UTF-8.
    double highest = 1;
    Outside outside = Outside::nearest;
    Readers readers = Readers::all;
    std::span<const char *const> words{};

    bool isText() const;
    /// "a whole number from 640 to 7680".
    QString described() const;

    /// The value that a typed text stands for, or, as the reason, what it should have been.
    Result<QVariant> typed(const QString &text) const;
    /// The value that a stored one counts as; invalid where that is the default.
    QVariant nearest(const QVariant &stored) const;
};

std::span<const PreferenceRange> preferenceRanges();
/// Null for a key that is no preference.
const PreferenceRange *preferenceRange(const QString &key);

/// The stored value of a key as it counts; keys that are no preferences keep theirs. Writes
/// one line to the log for each key whose value is not taken as it stands. Any thread.
QVariant valueInRange(const QString &key, const QVariant &stored);

} // namespace vignar
