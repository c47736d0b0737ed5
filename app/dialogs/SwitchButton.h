#pragma once

#include <QAbstractButton>

namespace wendrel {

// An on/off switch with its text beside it: a rounded track that fills with the highlight
// colour and a knob that moves to the right when on. Checkable; Space toggles it with focus,
// and a click anywhere on it, text included, does too.
class SwitchButton : public QAbstractButton {
    Q_OBJECT

public:
    explicit SwitchButton(const QString& text, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace wendrel
