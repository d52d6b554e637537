#pragma once

#include "scheduling/RunHistory.h"
#include "ui/common/Background.h"

#include <QDialog>

class QLabel;
class QPushButton;
class QTreeWidget;

/// The last runs, newest first, and what became of the reports of the selected one. Reads the run
/// history on another thread.
class frmHistory : public QDialog
{
    Q_OBJECT

public:
    explicit frmHistory(QWidget *parent = nullptr);

protected:
    void done(int result) override;

private:
    void showRuns();
    void showReports();
    void showReport();
    void openPage();

    std::vector<RunRecord> m_runs;
    QTreeWidget *lvRuns;
    QTreeWidget *lvRunReports;
    QLabel *lblDetails;
    QPushButton *cmdOpenPage;
    Background m_reading; ///< last: abandoned first
};
