#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QString>

#include <functional>

class QLabel;

/// Base of the modal editors. Its outcome stands in tag(); nothing typed in it is lost by accident:
/// closing it with changes asks first, and a save that fails leaves it open as it is. OK asks about
/// warnings that the changes have brought.
///
/// An editor puts its fields into content(), fills them, calls markUnchanged() and is shown by
/// exec(). Its objectName is its name in the window-layout file; its placement, header views and
/// splitters are restored when it is first shown and saved when it closes.
class EditorDialog : public QDialog
{
    Q_OBJECT

public:
    /// `helpPage`: the page that F1 and the Help button open (ui/HelpViewer.h).
    EditorDialog(const QString &name, const QString &helpPage, QWidget *parent);

    /// "SAVE" after OK, "CANCEL" otherwise.
    QString tag() const { return m_tag; }

    /// What OK does before the editor closes: puts its content where it is kept. When it throws
    /// Error, the editor shows the description and stays open.
    void setSaveAction(std::function<void()> save) { m_save = std::move(save); }

    /// From here on hasChanges() compares with the present content.
    void markUnchanged();
    bool hasChanges() const;

    /// OK and Cancel, as the buttons do.
    void accept() override;
    void reject() override;

protected:
    /// Where the fields go, above the buttons.
    QWidget *content() const { return m_content; }
    QDialogButtonBox *buttons() const { return m_buttons; }

    /// All that the user can change, as one text; equal texts mean no change.
    virtual QString contentText() const = 0;

    /// What speaks against the content though it can be saved, a sentence each.
    virtual QStringList warnings() const;
    /// What definitions/Advice.h says, as sentences; empty ones go.
    static QStringList sentences(QStringList advice);
    /// Shows warnings() above the buttons; to be called after each change.
    void showWarnings();

    /// What is wrong with the content, in words for the user, with the field at fault in `field`;
    /// empty: nothing, it can be saved.
    virtual QString inputError(QWidget *&field) const;

    void showEvent(QShowEvent *event) override;
    void done(int result) override;

private:
    void tabToChosenOptions();
    void orderTabs();
    bool acceptsNewWarnings();

    QString m_tag;
    QString m_unchanged;
    QStringList m_knownWarnings; ///< of the unchanged content
    std::function<void()> m_save;
    QWidget *m_content;
    QWidget *m_warningRow;
    QLabel *lblWarnings;
    QDialogButtonBox *m_buttons;
    bool m_placed = false;
};
