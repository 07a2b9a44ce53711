#pragma once

#include <QButtonGroup>

// A button group that reports itself together with the clicked button's id.
class MyButtonGroup : public QButtonGroup
{
    Q_OBJECT
public:
    explicit MyButtonGroup(QObject* parent = nullptr);

signals:
    void myButtonGroupClicked(MyButtonGroup* group, int id);

public slots:
    // Re-emits a click as myButtonGroupClicked(this, id); connected to the
    // group's id click signal.
    void on_changeButtonGroup(int id);
};
