// The lookup window: hands the chosen address to the page that opened it.
'use strict';

document.addEventListener('click', (event) => {
  const button = event.target.closest('[data-address]');
  if (!button) return;
  const opener = window.opener;
  const filled =
    opener &&
    !opener.closed &&
    typeof opener.takePafAddress === 'function' &&
    opener.takePafAddress(JSON.parse(button.dataset.address));
  if (filled) {
    window.close();
  } else {
    document.querySelector('[data-problem]').textContent =
      'The form that asked for this address is closed. Please open the lookup again from the form.';
  }
});
