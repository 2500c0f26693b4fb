// At the start of each page, in the world that it does not see: it may not leave for another, nor learn what the
// page before it has left behind in the name of the window.
window.name = '';
if (window.navigation)
    window.navigation.addEventListener('navigate', function (event) {
        if (event.cancelable && !event.hashChange && !event.destination.sameDocument)
            event.preventDefault();
    }, true);
