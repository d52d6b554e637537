#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QString>

#include <functional>

class QLabel;

/// Base of the modal editors. Its result is in tag(). No input is lost by accident: closing it with
/// changes asks first, and a save that fails leaves it open. OK asks about warnings that are new
/// because of the changes.
///
/// An editor puts its fields into content(), fills them, calls markUnchanged() and is shown by
/// exec(). Its objectName is its name in the window-layout file; its placement, header views and
/// splitters are restored when it is first shown and saved when it closes.
class EditorDialog : public QDialog
{
    Q_OBJECT

public:
    /// `helpPage`: the page that F1 and the Help button open (ui/help/HelpViewer.h).
    EditorDialog(const QString &name, const QString &helpPage, QWidget *parent);

    /// "SAVE" after OK, "CANCEL" otherwise.
    QString tag() const { return m_tag; }

    /// What OK does before the editor closes: saves its content. When it throws Error, the editor
    /// shows the description and stays open.
    void setSaveAction(std::function<void()> save) { m_save = std::move(save); }

    /// A remark above the fields, such as whom a change is for; none where it is empty.
    void setNote(const QString &note);

    /// From here on hasChanges() compares with the current content.
    void markUnchanged();
    virtual bool hasChanges() const;

    /// OK and Cancel, as the buttons do.
    void accept() override;
    void reject() override;

protected:
    /// The widget for the fields, above the buttons.
    QWidget *content() const { return m_content; }
    QDialogButtonBox *buttons() const { return m_buttons; }

    /// All that the user can change, as one text; equal texts mean no change.
    virtual QString contentText() const = 0;

    /// Warnings about content that can be saved, a sentence each.
    virtual QStringList warnings() const;
    /// The texts of definitions/Advice.h as sentences, without empty ones.
    static QStringList sentences(QStringList advice);
    /// Shows warnings() above the buttons; called after each change.
    void showWarnings();

    /// What happens to changes that the user discards. Throws Error, which is shown; the editor
    /// then stays open.
    virtual void discard() {}

    /// The error in the content, in words for the user, with its field in `field`; empty: there is
    /// none.
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
    QLabel *lblNote;
    QWidget *m_warningRow;
    QLabel *lblWarnings;
    QDialogButtonBox *m_buttons;
    bool m_placed = false;
};
