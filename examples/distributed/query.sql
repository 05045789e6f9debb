-- SPDX-License-Identifier: Apache-2.0
-- `table` is the table to ask, the sharded one unless it is set; `explain` may be what stands before the query.
\if :{?table}
\else
    \set table orders
\endif
:explain
SELECT number, bifun.trim(customer) AS customer, bifun.add_months(ordered, 1) AS due, bifun.round(amount, 0) AS amount
FROM :table
WHERE bifun.trim(customer) = 'customer 3' AND bifun.year(ordered) = 2024 AND bifun.mod(number, 1000) < 12
ORDER BY number;
