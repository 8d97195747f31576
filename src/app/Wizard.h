#pragma once

#include <string>
#include <vector>

// One page of a wizard. CmOk validates and stores what the page shows (false keeps the page
// open); a page that is not valid is skipped.
class LWizardPage {
public:
    virtual ~LWizardPage() = default;
    virtual bool CmOk() { return true; }
    virtual void Activate() {}
    virtual void Deactivate() {}
    virtual bool IsPageValid() const { return true; }
};

// What the wizard asks of the window that shows it.
class LWizardView {
public:
    virtual void ShowPage(int index) = 0;
    // The wizard ended: with OK past its last page, or cancelled.
    virtual void CloseWizard(bool ok) = 0;

protected:
    ~LWizardView() = default;
};

// Pages shown one at a time with Back and Next, skipping those not valid.
class LWizard {
public:
    struct Entry {
        LWizardPage* page;
        std::string layout;  // which view shows the page
        std::string title;   // the window title
        std::string heading;
        std::string subheading;
        bool header;         // whether the page shows the common header
    };

    void AddPage(LWizardPage& page, std::string layout, std::string title, std::string heading,
                 std::string subheading, bool header);
    // Shows the first valid page; false (closed at once) when there is none.
    bool Open(LWizardView& view);
    // Stores the current page and moves to the next valid one; past the last page the wizard
    // closes with OK. Nothing happens when the page refuses.
    void Next();
    // Moves to the nearest earlier valid page, if any.
    void Back();
    // Ends the wizard without storing the current page.
    void Cancel();
    void ShowCurrentPage();

    const std::vector<Entry>& Pages() const { return pages_; }
    int Current() const { return current_; }
    const Entry& CurrentEntry() const { return pages_[static_cast<size_t>(current_)]; }
    // Whether an earlier page can be shown, or a later one.
    bool HasBack() const;
    bool HasNext() const;

private:
    int Find(int from, int step) const;

    std::vector<Entry> pages_;
    int current_ = -1;
    LWizardView* view_ = nullptr;
};
