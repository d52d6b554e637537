#pragma once

#include "definitions/clsGraphDef.h"

#include <QDialog>

/// Shows how a report would draw a data item.
class frmPreview : public QDialog
{
    Q_OBJECT

public:
    /// The item that is shown first; empty texts: any.
    frmPreview(const clsGraphDef &chart, const QString &muid, const QString &dataIdent,
               QWidget *parent = nullptr);

protected:
    void done(int result) override;
};
