#pragma once

#include "shell/elidedLabel.h"

namespace vignar
{

/// What a sheet will be called with the preferences as they are, told of a sample video.
class NameExample : public ElidedLabel
{
    Q_OBJECT

public:
    explicit NameExample(QWidget *parent = nullptr);

    /// To be called after any change of the preferences.
    void refresh();
};

} // namespace vignar
