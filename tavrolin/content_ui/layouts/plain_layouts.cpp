#include "tavrolin/content_ui/layouts/plain_layouts.h"

namespace tavrolin {

// The messages name other layouts than their own, deliberately: what reads the logs knows them so.

void CVNLayout01::configureNotification() {
    compose("-[CVNLayout01 configureNotification]", "Could not load layout01 due to exception  %@",
            [this] {
                loadHeaderComponent();
                if (hasRating()) loadRatingComponent();
                if (hasActionButtons() || hasReplyButton()) loadActionButtonComponent();
            });
}

void CVNLayout21::configureNotification() {
    compose("-[CVNLayout21 configureNotification]", "Could not load layout21 due to exception  %@",
            [this] {
                loadHeaderComponent();
                if (hasMediaFile()) loadMediaComponent();
                if (hasRating()) loadRatingComponent();
                if (hasActionButtons() || hasReplyButton()) loadActionButtonComponent();
            });
}

void CVNLayout41::configureNotification() {
    compose("-[CVNLayout41 configureNotification]", "Could not load layout21 due to exception  %@",
            [this] {
                loadHeaderComponent();
                loadMediaComponent();
                if (hasRating()) loadRatingComponent();
                if (hasActionButtons() || hasReplyButton()) loadActionButtonComponent();
            });
}

// Sound and film go by the link where pictures go by the downloaded file: deliberate.

void CVNLayout51::configureNotification() {
    compose("-[CVNLayout51 configureNotification]", "Could not load layout21 due to exception  %@",
            [this] {
                loadHeaderComponent();
                if (hasMediaURL()) loadMediaComponent();
                if (hasRating()) loadRatingComponent();
                if (hasActionButtons() || hasReplyButton()) loadActionButtonComponent();
            });
}

void CVNLayout61::configureNotification() {
    compose("-[CVNLayout61 configureNotification]", "Could not load layout21 due to exception  %@",
            [this] {
                loadHeaderComponent();
                if (hasMediaURL()) loadMediaComponent();
                if (hasRating()) loadRatingComponent();
                if (hasActionButtons() || hasReplyButton()) loadActionButtonComponent();
            });
}

}  // namespace tavrolin
