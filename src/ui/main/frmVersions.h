#pragma once

#include <QDialog>

class QLabel;
class QPushButton;
class QTreeWidget;

/// The earlier versions of the definition files, with what restoring one would change. tag() is
/// "SAVE" when one was restored.
class frmVersions : public QDialog
{
    Q_OBJECT

public:
    explicit frmVersions(QWidget *parent = nullptr);

    QString tag() const { return m_tag; }

protected:
    void done(int result) override;

private:
    void fill();
    void showDifference();
    void restore();

    QString m_tag = QStringLiteral("CANCEL");
    QTreeWidget *lvVersions;
    QLabel *lblDifference;
    QPushButton *cmdRestore;
};
