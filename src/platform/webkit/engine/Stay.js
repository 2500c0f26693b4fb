if (window.navigation)
    window.navigation.addEventListener('navigate', function (event) {
        if (!event.hashChange && event.cancelable && !event.canIntercept)
            event.preventDefault();
        else if (!event.hashChange && event.destination && !event.destination.sameDocument)
            event.preventDefault();
    }, true);
