#pragma once

#include "project/projectfile.h"
#include "project/regexp.h"

#include <QDialog>
#include <QList>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class MainWindow;

// The project-wide search of the main window.
class FindReplaceDialog : public QDialog
{
    Q_OBJECT
public:
    explicit FindReplaceDialog(MainWindow *window);

    QLineEdit *findEdit() const;
    QLineEdit *replaceEdit() const;
    QTreeWidget *hits() const;
    QLabel *status() const;

    // The pattern of the fields and flags.
    Ovra::RegExp expression() const;

public slots:
    void findAll();
    void replaceOne();
    void replaceAll();
    // Shows the file of a hit, with the cursor on it.
    void showHit(int row);
    // Forgets the hits, whose files are about to close.
    void clear();

private:
    struct Hit
    {
        Ovra::ProjectFile *file;
        Ovra::ProjectFile::SearchResult result;
    };

    void updateButtons();

    MainWindow *m_window;
    QLineEdit *m_find;
    QLineEdit *m_replace;
    QCheckBox *m_regExp;
    QCheckBox *m_case;
    QCheckBox *m_words;
    QTreeWidget *m_hits;
    QLabel *m_status;
    QPushButton *m_findButton;
    QPushButton *m_replaceButton;
    QPushButton *m_replaceAllButton;
    QList<Hit> m_results;
};
