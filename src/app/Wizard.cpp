#include "app/Wizard.h"

void LWizard::AddPage(LWizardPage& page, std::string layout, std::string title,
                      std::string heading, std::string subheading, bool header) {
    pages_.push_back({&page, std::move(layout), std::move(title), std::move(heading),
                      std::move(subheading), header});
}

int LWizard::Find(int from, int step) const {
    for (int i = from; i >= 0 && i < static_cast<int>(pages_.size()); i += step)
        if (pages_[static_cast<size_t>(i)].page->IsPageValid()) return i;
    return -1;
}

bool LWizard::Open(LWizardView& view) {
    view_ = &view;
    current_ = Find(0, 1);
    if (current_ < 0) {
        view_->CloseWizard(false);
        return false;
    }
    ShowCurrentPage();
    return true;
}

void LWizard::ShowCurrentPage() {
    CurrentEntry().page->Activate();
    view_->ShowPage(current_);
}

void LWizard::Next() {
    if (current_ < 0 || !CurrentEntry().page->CmOk()) return;
    CurrentEntry().page->Deactivate();
    const int next = Find(current_ + 1, 1);
    if (next < 0) {
        current_ = -1;
        view_->CloseWizard(true);
        return;
    }
    current_ = next;
    ShowCurrentPage();
}

void LWizard::Back() {
    if (current_ < 0) return;
    const int previous = Find(current_ - 1, -1);
    if (previous < 0) return;
    CurrentEntry().page->Deactivate();
    current_ = previous;
    ShowCurrentPage();
}

void LWizard::Cancel() {
    if (current_ >= 0) CurrentEntry().page->Deactivate();
    current_ = -1;
    if (view_) view_->CloseWizard(false);
}

bool LWizard::HasBack() const {
    return current_ > 0 && Find(current_ - 1, -1) >= 0;
}

bool LWizard::HasNext() const {
    return current_ >= 0 && Find(current_ + 1, 1) >= 0;
}
