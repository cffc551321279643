// Shows the rows that have every word of the search box, and of the product tree what leads to them.
(function () {
  'use strict';
  var box = document.getElementById('search');
  var found = document.getElementById('found');
  var rows = Array.from(document.querySelectorAll('.row'));
  var texts = rows.map(function (row) { return (row.querySelector('.own') || row).textContent.toLowerCase(); });

  function search() {
    var words = box.value.toLowerCase().split(/\s+/).filter(Boolean);
    var leads = new Set();  // rows with a row inside that is shown
    var matches = 0;
    for (var i = rows.length - 1; i >= 0; --i) {  // what is inside a row stands behind it
      var row = rows[i];
      var text = texts[i];
      var isMatch = words.every(function (word) { return text.indexOf(word) >= 0; });
      var isShown = isMatch || leads.has(row);
      if (isMatch) ++matches;
      row.hidden = !isShown;
      var above = isShown && row.parentElement.closest('.row');
      if (above) leads.add(above);
    }
    if (words.length > 0) {
      leads.forEach(function (row) { row.querySelector('details').open = true; });
    }
    found.textContent = words.length === 0 ? '' : matches + ' of ' + rows.length + ' found';
  }

  box.addEventListener('input', search);
  document.getElementById('tools').hidden = false;
  search();
})();
