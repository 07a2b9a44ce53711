#include "MyButtonGroup.h"

MyButtonGroup::MyButtonGroup(QObject* parent) : QButtonGroup(parent)
{
    connect(this, &QButtonGroup::idClicked, this, &MyButtonGroup::on_changeButtonGroup);
}

void MyButtonGroup::on_changeButtonGroup(int id)
{
    emit myButtonGroupClicked(this, id);
}
