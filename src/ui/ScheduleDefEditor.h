#pragma once

#include "definitions/ScheduleDef.h"
#include "ui/EditorDialog.h"

/// The editor of a schedule definition, with the next five runs as they follow from each click.
class frmScheduleDefEditor : public EditorDialog
{
    Q_OBJECT

public:
    explicit frmScheduleDefEditor(QWidget *parent = nullptr);

    /// Fills the fields; from here on changes count.
    void load(const clsScheduleDef &schedule);

    /// Copies the fields into a schedule; what the editor does not show stays.
    void store(clsScheduleDef &schedule) const;

protected:
    QString contentText() const override;
    QString inputError(QWidget *&field) const override;
};
