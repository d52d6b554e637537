#pragma once

#include "ui/editors/EditorDialog.h"

class QLabel;
class QLineEdit;

/// The output-location dialog: the folder that reports are written to. OK makes sure that the
/// folder exists and can be written to, and saves it in the grapher configuration.
class frmOutputPath : public EditorDialog
{
    Q_OBJECT

public:
    explicit frmOutputPath(QWidget *parent = nullptr);

    void accept() override;

protected:
    // Asked in the constructor already.
    QString contentText() const final;
    QString inputError(QWidget *&field) const final;

private:
    QString folder() const;
    bool makeReady(const QString &folder);
    void browse();
    void showFolder();

    QLineEdit *txtOutputPath;
    QLabel *lblFolder;
};
